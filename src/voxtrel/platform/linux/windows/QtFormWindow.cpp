#include "voxtrel/platform/linux/windows/QtFormWindow.h"

#include <utility>

namespace voxtrel {

QtFormWindow::QtFormWindow(FormWindowOptions options, MakeContent makeContent)
    : options_(std::move(options)), makeContent_(std::move(makeContent)) {}

QtFormWindow::~QtFormWindow() {
  close();
}

void QtFormWindow::makeKeyAndOrderFront() {
  if (isVisible()) {
    dialog_->comeForward();
    return;
  }
  FormContent* const content = makeContent_();
  dialog_ = new FormDialog(options_, content);
  dialog_->comeUp();
  content->appeared();
}

/// One of the window's own buttons may be what leads here: it goes once that has returned.
void QtFormWindow::close() {
  if (dialog_) dialog_->close();
}

}  // namespace voxtrel
