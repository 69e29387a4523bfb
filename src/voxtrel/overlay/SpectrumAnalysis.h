#pragma once

#include <array>
#include <memory>
#include <span>

#include "voxtrel/overlay/SpectrumBands.h"
#include "voxtrel/platform/VectorMath.h"

namespace voxtrel {

/// Measures the level of each band in a block of samples.
/// Thread: one at a time.  Owns: the transform, the window function, scratch arrays.
/// Borrows: VectorMath (must outlive this).
/// Fails by: without a transform, the levels of the packed samples themselves.
class SpectrumAnalysis {
 public:
  explicit SpectrumAnalysis(const VectorMath& math);

  /// Mean magnitudes, not normalised, of the first 512 of `samples`; fewer are padded with zeros. A
  /// full-scale sine at the centre of a bin gives about 418 there. Allocates nothing.
  BandLevels analyse(std::span<const float> samples, double sampleRateHz);

 private:
  using Block = std::array<float, RealFft::kSize>;

  void applyWindow(std::span<const float> samples);
  void transform();

  const VectorMath& math_;
  std::unique_ptr<RealFft> fftSetup_;
  double edgesRateHz_ = 0;  // sample rate of edges_; 0: none yet
  BandEdges edges_{};
  alignas(32) Block hannWindow_{};
  alignas(32) Block windowed_{};
  RealFft::SplitComplex bins_{};
  alignas(32) std::array<float, RealFft::kBinCount> magnitudes_{};
};

}  // namespace voxtrel
