#pragma once

#include <array>
#include <span>

#include "voxtrel/platform/RealFft.h"

namespace voxtrel {

inline constexpr int kBandCount = 14;

/// One level for each band, lowest frequency first.
using BandLevels = std::array<float, kBandCount>;

/// Transform bins first ... end - 1; empty if end <= first.
struct BinRange {
  int first = 0;
  int end = 0;

  friend bool operator==(const BinRange&, const BinRange&) = default;
};

/// The bins of each band, equally wide in the logarithm of the frequency.
using BandEdges = std::array<BinRange, kBandCount>;

/// Bands from 80 Hz up to bin 254 (not included) at this sample rate.
/// Fails by: a fatal error if the bin of 80 Hz is no number or too large for an integer.
BandEdges bandEdges(double sampleRateHz);

/// The mean magnitude in each band; an empty band is 0.
BandLevels bandMeans(std::span<const float, RealFft::kBinCount> magnitudes, const BandEdges& edges);

/// The levels scaled so that the loudest is 1, unless that is silence (1e-6 or less).
BandLevels normalized(BandLevels levels);

}  // namespace voxtrel
