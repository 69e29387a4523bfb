#pragma once

#include <QImage>
#include <QRect>
#include <functional>
#include <vector>

#include "voxtrel/platform/Canvas.h"

namespace voxtrel {

/// Paints content that is cut to a rectangle with round corners, smoothly, as see-through pixels.
/// Thread: the main thread.  Owns: an image of the shape.
class PillPainter {
 public:
  using Draw = std::function<void(Canvas&)>;

  /// `sizePx` is that of the target; a point is `scale` pixels.
  PillPainter(QSize sizePx, double scale, double cornerRadius);

  /// Replaces everything in `target`.
  void paint(QPaintDevice& target, const Draw& draw) const;

  /// The shape as rectangles of whole pixels, for a window system that knows only those: each pixel
  /// of which at least `coverage` (0 ... 255) belongs to the shape.
  std::vector<QRect> pixels(int coverage) const;

  QSize sizePx() const { return shape_.size(); }
  double scale() const { return scale_; }

 private:
  double scale_;
  QImage shape_;  // opaque inside, see-through outside
};

}  // namespace voxtrel
