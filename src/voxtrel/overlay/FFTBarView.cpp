#include "voxtrel/overlay/FFTBarView.h"

#include <algorithm>

namespace voxtrel {
namespace {

constexpr Color kBackground{0.1, 0.1, 0.2, 0.92};
constexpr Color kBorder{0.18, 0.18, 0.31, 1.0};
constexpr Color kDot{0.91, 0.27, 0.38, 1.0};
constexpr double kBorderWidth = 1.0;
constexpr double kDotReserve = 16.0;  // right of the bars
constexpr double kDotDistance = 8.0;  // from the dot's centre to the right edge
constexpr double kDotDiameter = 5.0;
constexpr double kBarRadius = 1.0;
constexpr double kLeftInset = 5.0;
constexpr double kVerticalMargins = 6.0;
constexpr double kMinBarHeight = 1.5;

// From teal on the left to violet on the right.
Color barColor(int i) {
  const double t = static_cast<double>(i) / (FFTBarView::kBarCount - 1);
  return {0.0 + 0.48 * t, 0.83 - 0.54 * t, 0.67 + 0.33 * t, 1.0};
}

Rect barRect(const Rect& bounds, int i, float level) {
  constexpr double kAllBars = FFTBarView::kBarCount * FFTBarView::kBarWidth;
  const double spacing = (bounds.width - kDotReserve - kAllBars) / (FFTBarView::kBarCount + 1);
  const double height =
      std::max((bounds.height - kVerticalMargins) * static_cast<double>(level), kMinBarHeight);
  return {(spacing + kLeftInset) + (spacing + FFTBarView::kBarWidth) * i,
          bounds.midY() - height * 0.5, FFTBarView::kBarWidth, height};
}

}  // namespace

FFTBarView::FFTBarView(const Rect& frame, const VectorMath& math)
    : bounds_{0, 0, frame.width, frame.height}, analysis_(math) {}

void FFTBarView::processAudio(const AudioBuffer& buffer) {
  if (buffer.floatChannels.empty()) return;
  const std::size_t count = std::min(buffer.frameLength, kFftSize);
  const std::span<const float> samples(buffer.floatChannels[0], count);
  setBandEnergy(normalized(analysis_.analyse(samples, buffer.sampleRateHz)));
}

void FFTBarView::clear() {
  setBandEnergy({});
}

void FFTBarView::draw(Canvas& canvas) {
  drawBackground(canvas);
  smoothed_ = smoothedTowards(bandEnergy(), smoothed_);
  drawBars(canvas);
  drawDot(canvas);
}

BandLevels FFTBarView::bandEnergy() const {
  const std::lock_guard guard(lock_);
  return bandEnergy_;
}

void FFTBarView::setBandEnergy(const BandLevels& levels) {
  const std::lock_guard guard(lock_);
  bandEnergy_ = levels;
}

void FFTBarView::drawBackground(Canvas& canvas) const {
  const double radius = bounds_.height * 0.5;
  canvas.fillRoundedRect(bounds_, radius, kBackground);
  canvas.strokeRoundedRect(bounds_, radius, kBorderWidth, kBorder);
}

void FFTBarView::drawBars(Canvas& canvas) const {
  for (int i = 0; i < kBarCount; ++i) {
    const float level = smoothed_[static_cast<std::size_t>(i)];
    canvas.fillRoundedRect(barRect(bounds_, i, level), kBarRadius, barColor(i));
  }
}

void FFTBarView::drawDot(Canvas& canvas) const {
  const double radius = kDotDiameter * 0.5;
  canvas.fillOval(
      {bounds_.width - kDotDistance - radius, bounds_.midY() - radius, kDotDiameter, kDotDiameter},
      kDot);
}

}  // namespace voxtrel
