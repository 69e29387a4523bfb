#include "voxtrel/platform/linux/windows/FormDialog.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

#include "voxtrel/platform/linux/application/QtApplication.h"
#include "voxtrel/platform/linux/windows/FormStyle.h"

namespace voxtrel {

FormDialog::FormDialog(const FormWindowOptions& options, FormContent* content)
    : wanted_(options.contentWidthPt, options.contentHeightPt), content_(content) {
  setWindowTitle(formText(options.title));
  setWindowIcon(applicationIcon());
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSizeConstraint(QLayout::SetNoConstraint);
  layout->addWidget(content);
  content->firstInFocus()->setFocus();
  connect(this, &QDialog::finished, this, &QObject::deleteLater);
}

void FormDialog::comeUp() {
  ensurePolished();
  fitContent();
  centreOnScreen(*this);
  show();
  comeForward();
}

void FormDialog::comeForward() {
  raise();
  activateWindow();
}

bool FormDialog::event(QEvent* event) {
  const bool result = QDialog::event(event);
  if (event->type() == QEvent::LayoutRequest) fitContent();
  return result;
}

/// Return presses the focused button, on every desktop, and does not repeat while it is held.
void FormDialog::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  auto* const button = qobject_cast<QPushButton*>(focusWidget());
  if (isReturn && event->isAutoRepeat()) {
    event->accept();
  } else if (isReturn && button != nullptr) {
    button->click();
  } else {
    QDialog::keyPressEvent(event);
  }
}

/// A visible window never shrinks: that would look like a jump.
void FormDialog::fitContent() {
  const QSize floor = isVisible() ? size() : wanted_;
  const int width = std::max(floor.width(), content_->minimumSizeHint().width());
  setFixedSize(width, std::max(floor.height(), content_->neededHeight(width)));
}

void centreOnScreen(QWidget& window) {
  const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) return;
  const QRect area = screen->availableGeometry();
  QRect place({}, window.size());
  place.moveCenter(area.center());
  window.move(place.topLeft());
}

}  // namespace voxtrel
