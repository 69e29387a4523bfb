#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <string>
#include <vector>

#include "voxtrel/overlay/SpectrumAnalysis.h"

namespace voxtrel::testing {

struct ExactLevels {
  std::array<double, kBandCount> bands{};
  double loudestBin = 0;  // inside a band or outside
};

inline const std::vector<double> kSampleRatesHz = {8000,  11025, 12000,  16000, 20480,
                                                   22050, 24000, 32000,  44100, 48000,
                                                   88200, 96000, 176400, 192000};

// Twice the Fourier sum, straight from its definition.
inline double exactMagnitude(const std::vector<double>& windowed, std::size_t bin) {
  static const std::vector<std::complex<double>> kRoots = [] {
    std::vector<std::complex<double>> roots(512);
    for (std::size_t n = 0; n < 512; ++n) {
      roots[n] = std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(n) / 512.0);
    }
    return roots;
  }();
  std::complex<double> sum = 0;
  for (std::size_t n = 0; n < windowed.size(); ++n) sum += windowed[n] * kRoots[(bin * n) % 512];
  return 2.0 * std::abs(sum);
}

inline ExactLevels exactLevels(const std::vector<float>& samples, double sampleRateHz) {
  std::vector<double> windowed(512, 0.0);
  for (std::size_t n = 0; n < std::min<std::size_t>(samples.size(), 512); ++n) {
    const double turn = 2.0 * std::numbers::pi * static_cast<double>(n) / 512.0;
    windowed[n] = static_cast<double>(samples[n]) * 0.8165 * (1.0 - std::cos(turn));
  }
  std::vector<double> magnitudes(256);
  for (std::size_t k = 0; k < 256; ++k) magnitudes[k] = exactMagnitude(windowed, k);
  ExactLevels levels;
  levels.loudestBin = *std::max_element(magnitudes.begin(), magnitudes.end());
  const BandEdges edges = bandEdges(sampleRateHz);
  for (std::size_t i = 0; i < levels.bands.size(); ++i) {
    for (int k = edges[i].first; k < edges[i].end; ++k) {
      levels.bands[i] += magnitudes[static_cast<std::size_t>(k)] / (edges[i].end - edges[i].first);
    }
  }
  return levels;
}

// Each band to 1e-5 of itself. Single-precision rounding of a loud bin reaches every band, so a nearly
// empty band only to that rounding.
inline void expectExactLevels(const VectorMath& math, const std::vector<float>& samples,
                              const std::string& what) {
  SpectrumAnalysis analysis(math);
  for (const double rate : kSampleRatesHz) {
    const BandLevels levels = analysis.analyse(samples, rate);
    const ExactLevels exact = exactLevels(samples, rate);
    for (std::size_t i = 0; i < levels.size(); ++i) {
      const double tolerance = std::max(1e-5 * exact.bands[i], 3e-7 * exact.loudestBin);
      EXPECT_NEAR(static_cast<double>(levels[i]), exact.bands[i], tolerance)
          << what << ", band " << i << " at " << rate << " Hz";
    }
  }
}

}  // namespace voxtrel::testing
