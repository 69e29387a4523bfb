#include "voxtrel/platform/linux/overlay/PillPainter.h"

#include <QPainter>

#include "voxtrel/platform/linux/overlay/QPainterCanvas.h"

namespace voxtrel {
namespace {

QImage roundedShape(QSize sizePx, double radiusPx) {
  QImage shape(sizePx, QImage::Format_ARGB32_Premultiplied);
  shape.fill(Qt::transparent);
  QPainter painter(&shape);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::black);
  painter.drawRoundedRect(QRectF(QPointF(0, 0), sizePx), radiusPx, radiusPx);
  return shape;
}

}  // namespace

PillPainter::PillPainter(QSize sizePx, double scale, double cornerRadius)
    : scale_(scale), shape_(roundedShape(sizePx, cornerRadius * scale)) {}

void PillPainter::paint(QPaintDevice& target, const Draw& draw) const {
  QPainter painter(&target);
  painter.resetTransform();
  const double deviceScale = scale_ / target.devicePixelRatio();
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.fillRect(QRectF(0, 0, sizePx().width(), sizePx().height()), Qt::transparent);
  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  painter.save();
  painter.scale(deviceScale, deviceScale);
  QPainterCanvas canvas(painter);
  draw(canvas);
  painter.restore();
  painter.scale(1.0 / target.devicePixelRatio(), 1.0 / target.devicePixelRatio());
  painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
  painter.drawImage(0, 0, shape_);
}

std::vector<QRect> PillPainter::pixels(int coverage) const {
  std::vector<QRect> rows;
  for (int y = 0; y < shape_.height(); ++y) {
    const auto belongs = [&](int x) { return qAlpha(shape_.pixel(x, y)) >= coverage; };
    int left = 0;
    int right = shape_.width();
    while (left < right && !belongs(left)) ++left;
    while (right > left && !belongs(right - 1)) --right;
    if (left < right) rows.emplace_back(left, y, right - left, 1);
  }
  return rows;
}

}  // namespace voxtrel
