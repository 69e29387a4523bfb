#pragma once

namespace voxtrel {

/// A rectangle in points. On a screen, x grows to the right and y upwards, so `y` is the bottom
/// edge.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  double midX() const { return x + width * 0.5; }
  double midY() const { return y + height * 0.5; }

  friend bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace voxtrel
