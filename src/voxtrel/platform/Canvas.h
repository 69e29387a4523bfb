#pragma once

#include "voxtrel/platform/Geometry.h"

namespace voxtrel {

/// A colour in the standard RGB space; components from 0 to 1, alpha not multiplied in.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  friend bool operator==(const Color&, const Color&) = default;
};

/// Somewhere to paint, in points, each operation over what was painted before.
/// Thread: the main thread.
class Canvas {
 public:
  virtual ~Canvas() = default;

  virtual void fillRoundedRect(const Rect& rect, double radius, const Color& color) = 0;
  /// The line runs along the edge, half of it outside.
  virtual void strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                                 const Color& color) = 0;
  /// The ellipse that touches the four sides.
  virtual void fillOval(const Rect& rect, const Color& color) = 0;
};

}  // namespace voxtrel
