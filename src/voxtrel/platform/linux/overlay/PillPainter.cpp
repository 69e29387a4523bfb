#include "voxtrel/platform/linux/overlay/PillPainter.h"

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

/// A canvas over Qt's painter, with smooth edges.
/// Thread: the main thread.  Borrows: the painter (must outlive this).
class QPainterCanvas final : public Canvas {
 public:
  explicit QPainterCanvas(QPainter& painter) : painter_(painter) {
    painter_.setRenderHint(QPainter::Antialiasing);
  }

  void fillRoundedRect(const Rect& rect, double radius, const Color& color) override {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(toQt(color));
    painter_.drawRoundedRect(toQt(rect), radius, radius);
  }

  void strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                         const Color& color) override {
    painter_.setPen(QPen(toQt(color), lineWidth));
    painter_.setBrush(Qt::NoBrush);
    painter_.drawRoundedRect(toQt(rect), radius, radius);
  }

  void fillOval(const Rect& rect, const Color& color) override {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(toQt(color));
    painter_.drawEllipse(toQt(rect));
  }

 private:
  QPainter& painter_;
};

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
