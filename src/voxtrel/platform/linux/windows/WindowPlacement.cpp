#include "voxtrel/platform/linux/windows/WindowPlacement.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace voxtrel {

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
