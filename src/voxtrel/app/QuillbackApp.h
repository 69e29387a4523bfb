#pragma once

#include <memory>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

class AppDelegate;
struct Desktop;
class RecordingOverlay;

/// The program: the rooms put together on a desktop.
/// Thread: the main thread.  Owns: the delegate, the overlay.  Borrows: the desktop.
class QuillbackApp {
 public:
  explicit QuillbackApp(const Desktop& desktop);
  ~QuillbackApp();

  /// Runs until the application is told to quit; returns the process's exit status.
  int run(StartRequest request);

 private:
  const Desktop& desktop_;
  std::unique_ptr<RecordingOverlay> overlay_;
  std::shared_ptr<AppDelegate> appDelegate_;
};

}  // namespace voxtrel
