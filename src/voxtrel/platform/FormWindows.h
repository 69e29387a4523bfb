#pragma once

#include <memory>
#include <string>

namespace voxtrel {

class ModelDownloadView;
class SettingsView;

/// A titled window with a close box and a size of its own, neither resizable nor miniaturisable.
/// Closing only hides it. It may be closed and destroyed from within what its form calls.
/// Thread: the main thread.  Owns: a share of its form.
class FormWindow {
 public:
  virtual ~FormWindow() = default;

  virtual bool isVisible() const = 0;
  /// Shows the window, centred when it was not visible, in front and with the keyboard, and
  /// activates the application. The form hears that it has appeared before this returns.
  virtual void makeKeyAndOrderFront() = 0;
  virtual void close() = 0;
};

struct FormWindowOptions {
  std::string title;
  int contentWidthPt = 0;
  int contentHeightPt = 0;
};

/// Makes windows, invisible at first, that render the application's forms.
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
