#pragma once

#include <memory>
#include <string>

namespace voxtrel {

class ModelDownloadView;
class SettingsView;

/// A titled window with a close box and a fixed size; it cannot be minimised. Closing only hides it.
/// Its form's callbacks may close and destroy it.
/// Thread: the main thread.  Owns: its form, shared.
class FormWindow {
 public:
  virtual ~FormWindow() = default;

  virtual bool isVisible() const = 0;
  /// Shows the window in front and with the keyboard focus, centred if it was not visible, and
  /// activates the application. Calls the form's `appeared` before it returns.
  virtual void makeKeyAndOrderFront() = 0;
  virtual void close() = 0;
};

struct FormWindowOptions {
  std::string title;
  int contentWidthPt = 0;
  int contentHeightPt = 0;
};

/// Makes windows, hidden at first, that show the application's forms.
/// Thread: the main thread.
class FormWindows {
 public:
  virtual ~FormWindows() = default;

  virtual std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions& options,
                                                 std::shared_ptr<SettingsView> form) = 0;
  virtual std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions& options,
                                                 std::shared_ptr<ModelDownloadView> form) = 0;
};

}  // namespace voxtrel
