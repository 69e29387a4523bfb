#include "voxtrel/platform/linux/tray/SymbolIconEngine.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <utility>

namespace voxtrel {

namespace {

/// Contrast of at least 3:1 to the panels of the common light and dark themes, and a hue of its own
/// on grey ones.
constexpr QRgb kTone = qRgb(0x35, 0x84, 0xe4);

QImage drawn(const QString& file, const QSize& size) {
  QImage image(size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QSvgRenderer svg(file);
  svg.setAspectRatioMode(Qt::KeepAspectRatio);
  QPainter painter(&image);
  svg.render(&painter);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), QColor::fromRgb(kTone));
  return image;
}

}  // namespace

SymbolIconEngine::SymbolIconEngine(QString file, QString themedName)
    : file_(std::move(file)), themedName_(std::move(themedName)) {}

QPixmap SymbolIconEngine::pixmap(const QSize& size, QIcon::Mode, QIcon::State) {
  return size.isEmpty() ? QPixmap() : QPixmap::fromImage(drawn(file_, size));
}

void SymbolIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) {
  if (rect.isEmpty()) return;
  const qreal scale = painter->device() != nullptr ? painter->device()->devicePixelRatio() : 1.0;
  painter->drawImage(rect, drawn(file_, (QSizeF(rect.size()) * scale).toSize()));
}

QList<QSize> SymbolIconEngine::availableSizes(QIcon::Mode, QIcon::State) {
  return {QSize(16, 16), QSize(22, 22), QSize(24, 24), QSize(32, 32)};
}

QString SymbolIconEngine::iconName() {
  return themedName_;
}

QIconEngine* SymbolIconEngine::clone() const {
  return new SymbolIconEngine(file_, themedName_);
}

}  // namespace voxtrel
