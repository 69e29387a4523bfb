#include "voxtrel/overlay/SpectrumBands.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "common/base/Fatal.h"

namespace voxtrel {
namespace {

constexpr int kBinCount = static_cast<int>(RealFft::kBinCount);
constexpr float kSilence = 1e-6F;

// Computed in double precision, so that every C library gives the same last bit: the upper edge of
// the last band must stay just below 255.
float log10Single(float value) {
  return static_cast<float>(std::log10(static_cast<double>(value)));
}
float exp10Single(float value) {
  return static_cast<float>(std::pow(10.0, static_cast<double>(value)));
}

std::int64_t truncatedBin(float bin) {
  constexpr float kLimit = 0x1p63F;
  if (!(bin >= -kLimit && bin < kLimit)) fatalError("the sample rate gives no frequency bins");
  return static_cast<std::int64_t>(bin);
}

BinRange clampedRange(float lowerEdge, float upperEdge) {
  const std::int64_t first = truncatedBin(lowerEdge);
  // Cannot overflow: the largest float below 2^63 is 2^39 below it.
  const std::int64_t end =
      std::min<std::int64_t>(std::max(first + 1, truncatedBin(upperEdge)), kBinCount);
  if (end <= first) return {};
  return {static_cast<int>(first), static_cast<int>(end)};
}

}  // namespace

BandEdges bandEdges(double sampleRateHz) {
  const float nyquistHz = static_cast<float>(sampleRateHz) * 0.5F;
  const std::int64_t minBin = std::max<std::int64_t>(1, truncatedBin(20480.0F / nyquistHz));
  const float logMin = log10Single(static_cast<float>(minBin));
  const float logMax = log10Single(255.0F);
  const float span = logMax - logMin;
  const auto edge = [&](int i) {
    return exp10Single(logMin + span * (static_cast<float>(i) / static_cast<float>(kBandCount)));
  };

  BandEdges edges;
  for (int i = 0; i < kBandCount; ++i) {
    edges[static_cast<std::size_t>(i)] = clampedRange(edge(i), edge(i + 1));
  }
  return edges;
}

BandLevels bandMeans(const VectorMath& math, std::span<const float, RealFft::kBinCount> magnitudes,
                     const BandEdges& edges) {
  BandLevels levels{};
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const auto [first, end] = edges[i];
    if (end <= first) continue;
    const auto count = static_cast<std::size_t>(end - first);
    levels[i] = math.mean(magnitudes.subspan(static_cast<std::size_t>(first), count));
  }
  return levels;
}

BandLevels normalized(BandLevels levels) {
  const float peak = *std::max_element(levels.begin(), levels.end());
  if (peak > kSilence) {
    const float scale = 1.0F / peak;
    // A float times its own reciprocal may differ from 1 in the last bit.
    for (float& level : levels) level = level == peak ? 1.0F : level * scale;
  }
  return levels;
}

BandLevels smoothedTowards(const BandLevels& levels, const BandLevels& smoothed) {
  BandLevels next{};
  for (std::size_t i = 0; i < next.size(); ++i) {
    const float difference = levels[i] - smoothed[i];
    const float share = difference > 0 ? 0.55F : 0.15F;
    // In this order NaN becomes 1 and does not stay.
    next[i] = std::max(0.0F, std::min(1.0F, smoothed[i] + difference * share));
  }
  return next;
}

}  // namespace voxtrel
