#pragma once

#include <QImage>
#include <cstdint>
#include <vector>

#include "voxtrel/platform/Canvas.h"

namespace voxtrel {

/// Fills small rounded rectangles with smooth edges. QPainter makes a path of each and a few chords of each
/// curve, which takes longer and is less exact.
/// Thread: the main thread.  Owns: scratch memory, reused.
class RoundedFill {
 public:
  /// A point is `scale` pixels. What lies outside `clip`, by its alpha, is left out.
  RoundedFill(double scale, QImage clip);

  /// Paints over `target`, which has the size of the clip, 32-bit pixels and premultiplied alpha.
  /// `radius` is limited to half of the rectangle's width and height.
  void fillRoundedRect(QImage& target, const Rect& rect, double radius, const Color& color);
  void fillOval(QImage& target, const Rect& rect, const Color& color);

 private:
  /// In pixels.
  struct Outline {
    float left = 0, top = 0, right = 0, bottom = 0;
    float radiusX = 0, radiusY = 0;

    bool isStraightIn(int row) const;
  };
  /// Strips of the pixels' columns, from the first column on, and where the shape begins and ends in them.
  struct Slices {
    std::vector<float> width, top, bottom;
  };

  Outline outlineOf(const Rect& rect, double radiusX, double radiusY) const;
  void fill(QImage& target, const Outline& outline, QRgb color);
  void cutIntoSlices(const Outline& outline);
  void measureRow(int row);
  void paintRow(QRgb* pixels, const QRgb* clip, QRgb color) const;

  const double scale_;
  const QImage clip_;
  int firstColumn_ = 0;
  Slices slices_;
  std::vector<std::uint8_t> coverage_;  // of a row's pixels, from the first column on
};

}  // namespace voxtrel
