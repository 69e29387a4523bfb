#include "voxtrel/platform/linux/overlay/RoundedFill.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace voxtrel {
namespace {

constexpr std::size_t kSlices = 8;     // of a pixel
constexpr double kEdgePositions = 64;  // in a pixel, as QPainter has
constexpr unsigned kOpaque = 255;

float toEdge(double px) {
  return static_cast<float>(std::round(px * kEdgePositions) / kEdgePositions);
}

QRgb toPixel(const Color& color) {
  const auto component = [](double share) {
    return static_cast<int>(std::lround(share * kOpaque));
  };
  return qRgba(component(color.red * color.alpha), component(color.green * color.alpha),
               component(color.blue * color.alpha), component(color.alpha));
}

/// Two of a pixel's components, in the lower halves of 16 bits each, times share / 255.
std::uint32_t scaledPair(std::uint32_t pair, std::uint32_t share) {
  constexpr std::uint32_t kPair = 0x00FF00FF, kHalves = 0x00800080;
  const std::uint32_t product = pair * share + kHalves;
  return ((product + ((product >> 8) & kPair)) >> 8) & kPair;
}

QRgb scaled(QRgb pixel, std::uint32_t share) {
  constexpr std::uint32_t kPair = 0x00FF00FF;
  return scaledPair(pixel & kPair, share) | scaledPair((pixel >> 8) & kPair, share) << 8;
}

/// `below` has been clipped already.
QRgb paintedOver(QRgb below, QRgb color, unsigned coverage, unsigned clip) {
  const QRgb part = scaled(color, coverage);
  return scaled(part, clip) + scaled(below, kOpaque - static_cast<unsigned>(qAlpha(part)));
}

}  // namespace

RoundedFill::RoundedFill(double scale, QImage clip) : scale_(scale), clip_(std::move(clip)) {}

void RoundedFill::fillRoundedRect(QImage& target, const Rect& rect, double radius,
                                  const Color& color) {
  fill(target, outlineOf(rect, radius, radius), toPixel(color));
}

void RoundedFill::fillOval(QImage& target, const Rect& rect, const Color& color) {
  fill(target, outlineOf(rect, rect.width, rect.height), toPixel(color));
}

RoundedFill::Outline RoundedFill::outlineOf(const Rect& rect, double radiusX,
                                            double radiusY) const {
  return {.left = toEdge(rect.x * scale_),
          .top = toEdge(rect.y * scale_),
          .right = toEdge((rect.x + rect.width) * scale_),
          .bottom = toEdge((rect.y + rect.height) * scale_),
          .radiusX = static_cast<float>(std::min(radiusX, rect.width / 2) * scale_),
          .radiusY = static_cast<float>(std::min(radiusY, rect.height / 2) * scale_)};
}

bool RoundedFill::Outline::isStraightIn(int row) const {
  const auto y = static_cast<float>(row);
  return y >= top + radiusY && y + 1 <= bottom - radiusY;
}

void RoundedFill::fill(QImage& target, const Outline& outline, QRgb color) {
  cutIntoSlices(outline);
  auto* const pixels = reinterpret_cast<QRgb*>(target.bits());
  const auto* const clip = reinterpret_cast<const QRgb*>(clip_.constBits());
  const int width = target.width();
  const int end = std::min(target.height(), static_cast<int>(std::ceil(outline.bottom)));
  bool isMeasured = false;
  for (int row = std::max(0, static_cast<int>(std::floor(outline.top))); row < end; ++row) {
    // The rows between the corners are alike.
    const bool isStraight = outline.isStraightIn(row);
    if (!isStraight || !isMeasured) measureRow(row);
    isMeasured = isStraight;
    const std::ptrdiff_t first = std::ptrdiff_t{row} * width + firstColumn_;
    paintRow(pixels + first, clip + first, color);
  }
}

void RoundedFill::cutIntoSlices(const Outline& outline) {
  firstColumn_ = std::max(0, static_cast<int>(std::floor(outline.left)));
  const int end = std::min(clip_.width(), static_cast<int>(std::ceil(outline.right)));
  coverage_.assign(static_cast<std::size_t>(std::max(0, end - firstColumn_)), 0);
  const std::size_t count = coverage_.size() * kSlices;
  for (auto* const each : {&slices_.width, &slices_.top, &slices_.bottom}) each->resize(count);
  const float curve = outline.radiusX > 0 ? 1 / outline.radiusX : 0;
  for (std::size_t i = 0; i < count; ++i) {
    const float begin = static_cast<float>(firstColumn_) + static_cast<float>(i) / kSlices;
    const float left = std::max(begin, outline.left);
    const float right = std::min(begin + 1.0F / kSlices, outline.right);
    const float middle = (left + right) / 2;
    const float fromSide = std::min(middle - outline.left, outline.right - middle);
    const float fromCentre = std::max(0.0F, outline.radiusX - fromSide) * curve;
    const float height = std::sqrt(std::max(0.0F, 1 - fromCentre * fromCentre));
    const float inset = outline.radiusY * (1 - height);
    slices_.width[i] = std::max(0.0F, right - left);
    slices_.top[i] = outline.top + inset;
    slices_.bottom[i] = outline.bottom - inset;
  }
}

void RoundedFill::measureRow(int row) {
  const auto top = static_cast<float>(row);
  std::size_t slice = 0;
  for (std::uint8_t& coverage : coverage_) {
    // Several sums: the compiler may not reorder one, but it can vectorise these.
    std::array<float, 4> areas{};
    for (std::size_t i = 0; i < kSlices; ++i, ++slice) {
      const float begin = std::max(slices_.top[slice], top);
      const float end = std::min(slices_.bottom[slice], top + 1);
      areas[i % areas.size()] += slices_.width[slice] * std::max(0.0F, end - begin);
    }
    const float area = (areas[0] + areas[1]) + (areas[2] + areas[3]);
    coverage = static_cast<std::uint8_t>(std::min(255.0F, area * 256));
  }
}

void RoundedFill::paintRow(QRgb* pixels, const QRgb* clip, QRgb color) const {
  for (const std::uint8_t coverage : coverage_) {
    if (coverage != 0) {
      *pixels = paintedOver(*pixels, color, coverage, static_cast<unsigned>(qAlpha(*clip)));
    }
    ++pixels;
    ++clip;
  }
}

}  // namespace voxtrel
