#pragma once

#include <array>
#include <span>

#include "voxtrel/platform/VectorMath.h"

namespace voxtrel {

inline constexpr int kBandCount = 14;

/// One level per band, lowest frequency first.
using BandLevels = std::array<float, kBandCount>;

/// Transform bins `first` to `end` - 1; empty if end <= first.
struct BinRange {
  int first = 0;
  int end = 0;

  friend bool operator==(const BinRange&, const BinRange&) = default;
};

/// The bins of each band; bands are equally wide on a logarithmic frequency scale.
using BandEdges = std::array<BinRange, kBandCount>;

/// Bands from 80 Hz up to, but not including, bin 254 at this sample rate.
/// Fails by: a fatal error if the bin of 80 Hz is not finite or too large for an integer.
BandEdges bandEdges(double sampleRateHz);

/// The mean magnitude in each band; an empty band is 0.
BandLevels bandMeans(const VectorMath& math, std::span<const float, RealFft::kBinCount> magnitudes,
                     const BandEdges& edges);

/// The levels scaled so that the loudest is 1; unchanged if that is silence (1e-6 or less).
BandLevels normalized(BandLevels levels);

/// The bars' levels one frame after `smoothed`: 55 % of the way up to a higher level, 15 % of the way
/// down to a lower one, clamped to 0 ... 1.
BandLevels smoothedTowards(const BandLevels& levels, const BandLevels& smoothed);

}  // namespace voxtrel
