#include "voxtrel/platform/linux/windows/QtFormWindows.h"

#include <QCoreApplication>
#include <QPointer>
#include <functional>
#include <utility>

#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/DownloadForm.h"
#include "voxtrel/platform/linux/windows/FormDialog.h"
#include "voxtrel/platform/linux/windows/SettingsForm.h"

namespace voxtrel {
namespace {

/// A form's window, whose widgets exist only while it is open.
/// Thread: the main thread.  Owns: the dialog and, through `makeContent`, a share of the form.
class QtFormWindow final : public FormWindow {
 public:
  using MakeContent = std::function<FormContent*()>;

  QtFormWindow(FormWindowOptions options, MakeContent makeContent)
      : options_(std::move(options)), makeContent_(std::move(makeContent)) {}
  ~QtFormWindow() override { close(); }
  QtFormWindow(const QtFormWindow&) = delete;
  QtFormWindow& operator=(const QtFormWindow&) = delete;

  bool isVisible() const override { return dialog_ && dialog_->isVisible(); }

  void makeKeyAndOrderFront() override {
    if (isVisible()) {
      dialog_->comeForward();
      return;
    }
    FormContent* const content = makeContent_();
    dialog_ = new FormDialog(options_, content);
    dialog_->comeUp();
    content->appeared();
  }

  /// The dialog is deleted later, because one of its own buttons may have called this.
  void close() final {
    if (dialog_) dialog_->close();
  }

 private:
  const FormWindowOptions options_;
  const MakeContent makeContent_;
  QPointer<FormDialog> dialog_;
};

template <typename Content, typename Form>
std::unique_ptr<FormWindow> makeFormWindow(const FormWindowOptions& options,
                                           std::shared_ptr<Form> form) {
  return std::make_unique<QtFormWindow>(
      options, [form = std::move(form), heightPt = options.contentHeightPt] {
        return new Content(form, heightPt);
      });
}

}  // namespace

/// The main loop has ended, so it no longer deletes the dialogs closed last.
QtFormWindows::~QtFormWindows() {
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

std::unique_ptr<FormWindow> QtFormWindows::makeWindow(const FormWindowOptions& options,
                                                      std::shared_ptr<SettingsView> form) {
  colors_.follow();
  return makeFormWindow<SettingsForm>(options, std::move(form));
}

std::unique_ptr<FormWindow> QtFormWindows::makeWindow(const FormWindowOptions& options,
                                                      std::shared_ptr<ModelDownloadView> form) {
  colors_.follow();
  return makeFormWindow<DownloadForm>(options, std::move(form));
}

}  // namespace voxtrel
