#pragma once

#include "voxtrel/platform/Canvas.h"

class QPainter;

namespace voxtrel {

/// A canvas on Qt's painter, its edges smoothed.
/// Thread: the main thread.  Borrows: the painter (must outlive this).
class QPainterCanvas final : public Canvas {
 public:
  explicit QPainterCanvas(QPainter& painter);

  void fillRoundedRect(const Rect& rect, double radius, const Color& color) override;
  void strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                         const Color& color) override;
  void fillOval(const Rect& rect, const Color& color) override;

 private:
  QPainter& painter_;
};

}  // namespace voxtrel
