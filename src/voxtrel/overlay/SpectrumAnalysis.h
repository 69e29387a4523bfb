#pragma once

#include <array>
#include <memory>
#include <span>

#include "voxtrel/overlay/SpectrumBands.h"
#include "voxtrel/platform/RealFft.h"

namespace voxtrel {

/// Measures how loud each band of a block of sound is.
/// Thread: one at a time.  Owns: the transform, the window and room to work in.
/// Fails by: without a transform, bands of the packed samples themselves.
class SpectrumAnalysis {
 public:
  /// `fftSetup` may be null.
  explicit SpectrumAnalysis(std::unique_ptr<RealFft> fftSetup);

  /// Mean magnitudes, not normalised, of the first 512 of `samples`; fewer are filled up with
  /// zeros. A full-scale sine in the middle of a bin measures about 418 there. Allocates nothing.
  BandLevels analyse(std::span<const float> samples, double sampleRateHz);

 private:
  using Block = std::array<float, RealFft::kSize>;

  void applyWindow(std::span<const float> samples);
  void transform();
  void measureMagnitudes();

  std::unique_ptr<RealFft> fftSetup_;
  double edgesRateHz_ = 0;  // the rate that edges_ is for
  BandEdges edges_{};
  alignas(32) Block hannWindow_{};
  alignas(32) Block windowed_{};
  RealFft::SplitComplex bins_{};
  alignas(32) std::array<float, RealFft::kBinCount> magnitudes_{};
};

}  // namespace voxtrel
