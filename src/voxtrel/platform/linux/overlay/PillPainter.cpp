#include "voxtrel/platform/linux/overlay/PillPainter.h"

#include <QPainter>
#include <algorithm>
#include <span>

namespace voxtrel {
namespace {

QRectF toQt(const Rect& rect) {
  return {rect.x, rect.y, rect.width, rect.height};
}

QColor toQt(const Color& color) {
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

/// Writes down what is painted.
/// Thread: the main thread.  Borrows: the list (must outlive this).
class ShapeList final : public Canvas {
 public:
  explicit ShapeList(std::vector<PaintedShape>& shapes) : shapes_(shapes) { shapes_.clear(); }

  void fillRoundedRect(const Rect& rect, double radius, const Color& color) override {
    shapes_.push_back({PaintedShape::Kind::filledRect, rect, radius, 0, color});
  }

  void strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                         const Color& color) override {
    shapes_.push_back({PaintedShape::Kind::strokedRect, rect, radius, lineWidth, color});
  }

  void fillOval(const Rect& rect, const Color& color) override {
    shapes_.push_back({PaintedShape::Kind::filledOval, rect, 0, 0, color});
  }

 private:
  std::vector<PaintedShape>& shapes_;
};

void paintShape(QPainter& painter, const PaintedShape& shape) {
  const bool isFilled = shape.kind != PaintedShape::Kind::strokedRect;
  const QColor color = toQt(shape.color);
  painter.setPen(isFilled ? QPen(Qt::NoPen) : QPen(color, shape.lineWidth));
  painter.setBrush(isFilled ? QBrush(color) : QBrush(Qt::NoBrush));
  if (shape.kind == PaintedShape::Kind::filledOval) {
    painter.drawEllipse(toQt(shape.rect));
  } else {
    painter.drawRoundedRect(toQt(shape.rect), shape.radius, shape.radius);
  }
}

void paintShapes(QPainter& painter, double scale, std::span<const PaintedShape> shapes) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(scale, scale);
  for (const PaintedShape& shape : shapes) paintShape(painter, shape);
  painter.resetTransform();
}

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

bool PillPainter::setContent(const Draw& draw) {
  shapes_.swap(shapesBefore_);
  ShapeList canvas(shapes_);
  draw(canvas);
  const auto differs =
      std::mismatch(shapes_.begin(), shapes_.end(), shapesBefore_.begin(), shapesBefore_.end());
  sameShapes_ = static_cast<std::size_t>(differs.first - shapes_.begin());
  return differs.first != shapes_.end() || differs.second != shapesBefore_.end();
}

/// A background that has changed, or is unknown, becomes what has not changed since the last picture.
void PillPainter::keepBackground() {
  if (backgroundShapes_ > 0 && sameShapes_ >= backgroundShapes_) return;
  backgroundShapes_ = sameShapes_;
  background_ = QImage(sizePx(), QImage::Format_ARGB32_Premultiplied);
  background_.fill(Qt::transparent);
  QPainter painter(&background_);
  paintShapes(painter, scale_, std::span(shapes_).first(backgroundShapes_));
}

void PillPainter::paint(QImage& target) {
  keepBackground();
  QPainter painter(&target);
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.drawImage(0, 0, background_);
  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  paintShapes(painter, scale_, std::span(shapes_).subspan(backgroundShapes_));
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
