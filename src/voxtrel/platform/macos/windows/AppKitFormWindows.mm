#include "voxtrel/platform/macos/windows/AppKitFormWindows.h"

#include <utility>

#include "voxtrel/platform/macos/foundation/Strings.h"
#include "voxtrel/platform/macos/windows/DownloadForm.h"
#include "voxtrel/platform/macos/windows/FormWindow.h"
#include "voxtrel/platform/macos/windows/SettingsForm.h"

namespace voxtrel {
namespace {

/// A form's window.
/// Thread: the main thread.  Owns: the window and, through its content, a share of the form.
class AppKitFormWindow final : public FormWindow {
 public:
  AppKitFormWindow(const FormWindowOptions& options, NSView<VoxtrelFormContent>* content)
      : window_([[VoxtrelFormWindow alloc] initWithTitle:toNSString(options.title)
                                                 content:content]) {}
  AppKitFormWindow(const AppKitFormWindow&) = delete;
  AppKitFormWindow& operator=(const AppKitFormWindow&) = delete;

  /// The window lives until the main queue's next turn: one of its own buttons may have called this.
  ~AppKitFormWindow() override {
    close();
    VoxtrelFormWindow* const closed = window_;
    dispatch_async(dispatch_get_main_queue(), ^{
      (void)closed;
    });
  }

  bool isVisible() const override { return window_.isVisible; }
  void makeKeyAndOrderFront() override { [window_ comeUp]; }
  void close() final { [window_ close]; }

 private:
  VoxtrelFormWindow* const window_;
};

NSRect contentRect(const FormWindowOptions& options) {
  return NSMakeRect(0, 0, options.contentWidthPt, options.contentHeightPt);
}

}  // namespace

std::unique_ptr<FormWindow> AppKitFormWindows::makeWindow(const FormWindowOptions& options,
                                                          std::shared_ptr<SettingsView> form) {
  auto* const content = [[VoxtrelSettingsForm alloc] initWithFrame:contentRect(options)
                                                              form:std::move(form)];
  return std::make_unique<AppKitFormWindow>(options, content);
}

std::unique_ptr<FormWindow> AppKitFormWindows::makeWindow(const FormWindowOptions& options,
                                                          std::shared_ptr<ModelDownloadView> form) {
  auto* const content = [[VoxtrelDownloadForm alloc] initWithFrame:contentRect(options)
                                                              form:std::move(form)];
  return std::make_unique<AppKitFormWindow>(options, content);
}

}  // namespace voxtrel
