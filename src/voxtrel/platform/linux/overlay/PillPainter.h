#pragma once

#include <QImage>
#include <QRect>
#include <functional>
#include <vector>

#include "voxtrel/platform/Canvas.h"

namespace voxtrel {

/// Paints content clipped to a rounded rectangle with smooth edges, as pixels with alpha.
/// Thread: the main thread.  Owns: an image of the shape.
class PillPainter {
 public:
  using Draw = std::function<void(Canvas&)>;

  /// `sizePx` is the target's size; a point is `scale` pixels, `cornerRadius` is in points.
  PillPainter(QSize sizePx, double scale, double cornerRadius);

  /// Replaces everything in `target`.
  void paint(QPaintDevice& target, const Draw& draw) const;

  /// The shape as rectangles of whole pixels: every pixel of which at least `coverage` of 255 lies
  /// inside.
  std::vector<QRect> pixels(int coverage) const;

  QSize sizePx() const { return shape_.size(); }
  double scale() const { return scale_; }

 private:
  double scale_;
  QImage shape_;  // opaque inside, transparent outside
};

}  // namespace voxtrel
