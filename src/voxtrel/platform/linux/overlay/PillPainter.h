#pragma once

#include <QImage>
#include <QRect>
#include <cstddef>
#include <functional>
#include <vector>

#include "voxtrel/platform/Canvas.h"
#include "voxtrel/platform/linux/overlay/RoundedFill.h"

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

/// Paints content clipped to a rounded rectangle with smooth edges, as pixels with alpha. The background, up
/// to the last line in it, is painted once for as long as it stays the same.
/// Thread: the main thread.  Owns: the picture; images of the clip's shape and of the background.
class PillPainter {
 public:
  using Draw = std::function<void(Canvas&)>;

  /// `sizePx` is the picture's size; a point is `scale` pixels, `cornerRadius` is in points.
  PillPainter(QSize sizePx, double scale, double cornerRadius);

  /// Paints the picture as `draw` says. Returns a rectangle around the pixels that differ from the picture
  /// before: the first time all, else none if there are none.
  QRect paint(const Draw& draw);
  const QImage& picture() const { return picture_; }

  /// The shape as rectangles of whole pixels: every pixel of which at least `coverage` of 255 lies
  /// inside.
  std::vector<QRect> pixels(int coverage) const;

  QSize sizePx() const { return shape_.size(); }
  double scale() const { return scale_; }

 private:
  bool record(const Draw& draw);
  void keepBackground();
  void fill(const PaintedShape& shape);

  double scale_;
  QImage shape_;  // opaque inside, transparent outside
  RoundedFill foreground_;
  QImage picture_;
  QImage next_;
  bool isPainted_ = false;
  std::vector<PaintedShape> shapes_;
  std::vector<PaintedShape> shapesBefore_;
  std::size_t sameShapes_ = 0;  // how many of the first shapes are as before
  QImage background_;           // the first shapes of these, clipped
  std::size_t backgroundShapes_ = 0;
};

}  // namespace voxtrel
