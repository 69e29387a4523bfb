#pragma once

#include <QImage>
#include <QRect>
#include <cstddef>
#include <functional>
#include <vector>

#include "voxtrel/platform/Canvas.h"

namespace voxtrel {

/// One operation of a canvas.
struct PaintedShape {
  enum class Kind { filledRect, strokedRect, filledOval };

  Kind kind{};
  Rect rect;
  double radius = 0;
  double lineWidth = 0;
  Color color;

  friend bool operator==(const PaintedShape&, const PaintedShape&) = default;
};

/// Paints content clipped to a rounded rectangle with smooth edges, as pixels with alpha. The shapes at
/// its beginning that stay the same, the background, are painted once.
/// Thread: the main thread.  Owns: images of the clip's shape and of the background.
class PillPainter {
 public:
  using Draw = std::function<void(Canvas&)>;

  /// `sizePx` is the target's size; a point is `scale` pixels, `cornerRadius` is in points.
  PillPainter(QSize sizePx, double scale, double cornerRadius);

  /// What is painted from now on. Returns whether it differs from what was painted before.
  bool setContent(const Draw& draw);

  /// Replaces everything in `target`, whose size must be `sizePx`.
  void paint(QImage& target);

  /// The shape as rectangles of whole pixels: every pixel of which at least `coverage` of 255 lies
  /// inside.
  std::vector<QRect> pixels(int coverage) const;

  QSize sizePx() const { return shape_.size(); }
  double scale() const { return scale_; }

 private:
  void keepBackground();

  double scale_;
  QImage shape_;  // opaque inside, transparent outside
  std::vector<PaintedShape> shapes_;
  std::vector<PaintedShape> shapesBefore_;
  std::size_t sameShapes_ = 0;  // how many of the first shapes are as before
  QImage background_;           // the first shapes of these, not yet clipped
  std::size_t backgroundShapes_ = 0;
};

}  // namespace voxtrel
