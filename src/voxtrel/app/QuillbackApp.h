#pragma once

#include <memory>

namespace voxtrel {

class AppDelegate;
class Desktop;
class RecordingOverlay;

/// The program: the rooms, put together on a desktop.
/// Thread: the main thread.  Owns: the delegate, the overlay.  Borrows: the desktop.
class QuillbackApp {
 public:
  explicit QuillbackApp(Desktop& desktop);
  ~QuillbackApp();

  /// Runs until the application is told to quit; returns the process's exit status.
  int run();

 private:
  Desktop& desktop_;
  std::unique_ptr<RecordingOverlay> overlay_;
  std::shared_ptr<AppDelegate> appDelegate_;
};

}  // namespace voxtrel
