#pragma once

#include "voxtrel/platform/Canvas.h"

namespace voxtrel {

/// Paints with Bezier paths into the current graphics context, in calibrated RGB.
/// Thread: the main thread.
class BezierCanvas final : public Canvas {
 public:
  void fillRoundedRect(const Rect& rect, double radius, const Color& color) override;
  void strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                         const Color& color) override;
  void fillOval(const Rect& rect, const Color& color) override;
};

/// Limits all that is painted from now on to a rounded rectangle.
void clipToRoundedRect(const Rect& rect, double radius);

}  // namespace voxtrel
