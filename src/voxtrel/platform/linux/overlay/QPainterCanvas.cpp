#include "voxtrel/platform/linux/overlay/QPainterCanvas.h"

#include <QPainter>

namespace voxtrel {
namespace {

QRectF toQt(const Rect& rect) {
  return {rect.x, rect.y, rect.width, rect.height};
}

QColor toQt(const Color& color) {
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

}  // namespace

QPainterCanvas::QPainterCanvas(QPainter& painter) : painter_(painter) {
  painter_.setRenderHint(QPainter::Antialiasing);
}

void QPainterCanvas::fillRoundedRect(const Rect& rect, double radius, const Color& color) {
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(toQt(color));
  painter_.drawRoundedRect(toQt(rect), radius, radius);
}

void QPainterCanvas::strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                                       const Color& color) {
  painter_.setPen(QPen(toQt(color), lineWidth));
  painter_.setBrush(Qt::NoBrush);
  painter_.drawRoundedRect(toQt(rect), radius, radius);
}

void QPainterCanvas::fillOval(const Rect& rect, const Color& color) {
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(toQt(color));
  painter_.drawEllipse(toQt(rect));
}

}  // namespace voxtrel
