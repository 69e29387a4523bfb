#pragma once

#include <array>
#include <memory>
#include <span>

#include "voxtrel/overlay/SpectrumBands.h"
#include "voxtrel/platform/RealFft.h"

namespace voxtrel {

/// Measures the level of each band in a block of samples.
/// Thread: one at a time.  Owns: the transform, the window function, scratch arrays.
/// Fails by: without a transform, the levels of the packed samples themselves.
class SpectrumAnalysis {
 public:
  /// `fftSetup` may be null.
  explicit SpectrumAnalysis(std::unique_ptr<RealFft> fftSetup);

  /// Mean magnitudes, not normalised, of the first 512 of `samples`; fewer are padded with zeros. A
  /// full-scale sine at the centre of a bin gives about 418 there. Allocates nothing.
  BandLevels analyse(std::span<const float> samples, double sampleRateHz);

 private:
  using Block = std::array<float, RealFft::kSize>;

  void applyWindow(std::span<const float> samples);
  void transform();
  void measureMagnitudes();

  std::unique_ptr<RealFft> fftSetup_;
  double edgesRateHz_ = 0;  // sample rate of edges_; 0: none yet
  BandEdges edges_{};
  alignas(32) Block hannWindow_{};
  alignas(32) Block windowed_{};
  RealFft::SplitComplex bins_{};
  alignas(32) std::array<float, RealFft::kBinCount> magnitudes_{};
};

}  // namespace voxtrel
