#include "platform/linux/NoticeBox.h"

#include <QGridLayout>

#include "platform/linux/SymbolIcons.h"

namespace voxtrel {

namespace {

/// Wide enough for its own title; the box by itself is as narrow as its text.
void widen(QMessageBox& box) {
  constexpr int kWidthPx = 300;
  if (auto* const grid = qobject_cast<QGridLayout*>(box.layout())) {
    grid->addItem(new QSpacerItem(kWidthPx, 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
}

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
    widen(*box_);
    box_->show();
  }
  box_->raise();
  box_->activateWindow();
}

}  // namespace voxtrel
