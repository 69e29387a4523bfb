#include "voxtrel/overlay/SpectrumAnalysis.h"

#include <algorithm>

namespace voxtrel {

SpectrumAnalysis::SpectrumAnalysis(const VectorMath& math)
    : math_(math), fftSetup_(math.makeRealFft()) {
  math_.hannWindow(hannWindow_);
}

BandLevels SpectrumAnalysis::analyse(std::span<const float> samples, double sampleRateHz) {
  // At 0, which means no edges yet, bandEdges ends the process if the rate is 0 too.
  if (edgesRateHz_ == 0 || edgesRateHz_ != sampleRateHz) {
    edges_ = bandEdges(sampleRateHz);
    edgesRateHz_ = sampleRateHz;
  }
  applyWindow(samples);
  transform();
  math_.magnitudes(bins_, magnitudes_);
  return bandMeans(math_, magnitudes_, edges_);
}

void SpectrumAnalysis::applyWindow(std::span<const float> samples) {
  const std::size_t count = std::min(samples.size(), windowed_.size());
  const std::span<float> windowed(windowed_);
  math_.multiply(samples.first(count), std::span<const float>(hannWindow_).first(count),
                 windowed.first(count));
  std::fill(windowed_.begin() + static_cast<std::ptrdiff_t>(count), windowed_.end(), 0.0F);
}

void SpectrumAnalysis::transform() {
  if (fftSetup_) {
    fftSetup_->forward(windowed_, bins_);
  } else {
    math_.deinterleave(windowed_, bins_);
  }
}

}  // namespace voxtrel
