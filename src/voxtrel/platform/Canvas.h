#pragma once

namespace voxtrel {

/// A rectangle in points. On screens x grows to the right and y upwards: `y` is the bottom edge.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  double midX() const { return x + width * 0.5; }
  double midY() const { return y + height * 0.5; }

  friend bool operator==(const Rect&, const Rect&) = default;
};

/// A colour in the standard RGB space; components from 0 to 1, alpha not multiplied in.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  friend bool operator==(const Color&, const Color&) = default;
};

/// A surface to paint on, in points. Each operation paints over the ones before.
/// Thread: the main thread.
class Canvas {
 public:
  virtual ~Canvas() = default;

  virtual void fillRoundedRect(const Rect& rect, double radius, const Color& color) = 0;
  /// The line is centred on the edge.
  virtual void strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                                 const Color& color) = 0;
  /// The ellipse inscribed in `rect`.
  virtual void fillOval(const Rect& rect, const Color& color) = 0;
};

}  // namespace voxtrel
