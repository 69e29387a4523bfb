#include "voxtrel/platform/linux/windows/NoticeBox.h"

#include "voxtrel/platform/linux/tray/SymbolIcons.h"
#include "voxtrel/platform/linux/windows/BoxWidth.h"

namespace voxtrel {

namespace {

constexpr int kWidthPt = 300;  // enough for its own title

}  // namespace

NoticeBox::~NoticeBox() {
  delete box_.data();
}

void NoticeBox::show(const QString& title, const QString& text, const QString& details) {
  if (!box_) {
    box_ = new QMessageBox(QMessageBox::NoIcon, title, text, QMessageBox::Ok);
    box_->setTextFormat(Qt::PlainText);
    box_->setInformativeText(details);
    box_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box_->setWindowIcon(applicationIcon());
    box_->setAttribute(Qt::WA_DeleteOnClose);
    box_->setModal(false);
    widen(*box_, kWidthPt);
    box_->show();
  }
  box_->raise();
  box_->activateWindow();
}

}  // namespace voxtrel
