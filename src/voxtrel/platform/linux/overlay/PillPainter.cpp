#include "voxtrel/platform/linux/overlay/PillPainter.h"

#include <QPainter>
#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

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

QImage emptyImage(QSize sizePx) {
  QImage image(sizePx, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  return image;
}

QImage roundedShape(QSize sizePx, double radiusPx) {
  QImage shape = emptyImage(sizePx);
  QPainter painter(&shape);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::black);
  painter.drawRoundedRect(QRectF(QPointF(0, 0), sizePx), radiusPx, radiusPx);
  return shape;
}

std::span<const QRgb> pixelRow(const QImage& image, int y) {
  return {reinterpret_cast<const QRgb*>(image.constScanLine(y)),
          static_cast<std::size_t>(image.width())};
}

/// The pixels of a row that differ: the first, and the one behind the last; equal if there are none.
std::pair<int, int> differentPixels(const QImage& one, const QImage& other, int y) {
  const auto a = pixelRow(one, y), b = pixelRow(other, y);
  const auto first = std::mismatch(a.begin(), a.end(), b.begin()).first - a.begin();
  if (first == one.width()) return {};
  const auto behind = a.rend() - std::mismatch(a.rbegin(), a.rend(), b.rbegin()).first;
  return {static_cast<int>(first), static_cast<int>(behind)};
}

/// Of two pictures of one size: a rectangle around the pixels that differ.
QRect difference(const QImage& one, const QImage& other) {
  QRect all;
  for (int y = 0; y < one.height(); ++y) {
    const auto [first, behind] = differentPixels(one, other, y);
    if (first < behind) all |= QRect(first, y, behind - first, 1);
  }
  return all;
}

}  // namespace

PillPainter::PillPainter(QSize sizePx, double scale, double cornerRadius)
    : scale_(scale),
      shape_(roundedShape(sizePx, cornerRadius * scale)),
      foreground_(scale, shape_),
      picture_(emptyImage(sizePx)),
      next_(emptyImage(sizePx)) {}

QRect PillPainter::paint(const Draw& draw) {
  const bool isFirst = !std::exchange(isPainted_, true);
  if (!record(draw) && !isFirst) return {};  // bars at rest cost nothing
  keepBackground();
  std::memcpy(next_.bits(), background_.constBits(), static_cast<std::size_t>(next_.sizeInBytes()));
  for (const PaintedShape& shape : std::span(shapes_).subspan(backgroundShapes_)) fill(shape);
  picture_.swap(next_);
  return isFirst ? picture_.rect() : difference(picture_, next_);
}

/// Returns whether anything is to be painted that was not before.
bool PillPainter::record(const Draw& draw) {
  shapes_.swap(shapesBefore_);
  ShapeList canvas(shapes_);
  draw(canvas);
  const auto differs =
      std::mismatch(shapes_.begin(), shapes_.end(), shapesBefore_.begin(), shapesBefore_.end());
  sameShapes_ = static_cast<std::size_t>(differs.first - shapes_.begin());
  return differs.first != shapes_.end() || differs.second != shapesBefore_.end();
}

void PillPainter::keepBackground() {
  const auto last = std::find_if(shapes_.rbegin(), shapes_.rend(), [](const PaintedShape& shape) {
    return shape.kind == PaintedShape::Kind::strokedRect;
  });
  const auto count = static_cast<std::size_t>(shapes_.rend() - last);
  if (!background_.isNull() && count == backgroundShapes_ && count <= sameShapes_) return;
  backgroundShapes_ = count;
  background_ = emptyImage(sizePx());
  QPainter painter(&background_);
  paintShapes(painter, scale_, std::span(shapes_).first(count));
  painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
  painter.drawImage(0, 0, shape_);
}

void PillPainter::fill(const PaintedShape& shape) {
  if (shape.kind == PaintedShape::Kind::filledOval) {
    foreground_.fillOval(next_, shape.rect, shape.color);
  } else {
    foreground_.fillRoundedRect(next_, shape.rect, shape.radius, shape.color);
  }
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
