#include "voxtrel/overlay/SpectrumAnalysis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace voxtrel {
namespace {

// A periodic Hann window with a mean square of about 1.
float hannCoefficient(std::size_t n) {
  const double turn = 2.0 * std::numbers::pi * static_cast<double>(n);
  return static_cast<float>(0.8165 * (1.0 - std::cos(turn / static_cast<double>(RealFft::kSize))));
}

}  // namespace

SpectrumAnalysis::SpectrumAnalysis(std::unique_ptr<RealFft> fftSetup)
    : fftSetup_(std::move(fftSetup)) {
  for (std::size_t n = 0; n < hannWindow_.size(); ++n) hannWindow_[n] = hannCoefficient(n);
}

BandLevels SpectrumAnalysis::analyse(std::span<const float> samples, double sampleRateHz) {
  // At 0, which means no edges yet, bandEdges ends the process if the rate is 0 too.
  if (edgesRateHz_ == 0 || edgesRateHz_ != sampleRateHz) {
    edges_ = bandEdges(sampleRateHz);
    edgesRateHz_ = sampleRateHz;
  }
  applyWindow(samples);
  transform();
  measureMagnitudes();
  return bandMeans(magnitudes_, edges_);
}

void SpectrumAnalysis::applyWindow(std::span<const float> samples) {
  const std::size_t count = std::min(samples.size(), windowed_.size());
  for (std::size_t k = 0; k < count; ++k) windowed_[k] = samples[k] * hannWindow_[k];
  std::fill(windowed_.begin() + static_cast<std::ptrdiff_t>(count), windowed_.end(), 0.0F);
}

void SpectrumAnalysis::transform() {
  if (fftSetup_) {
    fftSetup_->forward(windowed_, bins_);
    return;
  }
  for (std::size_t j = 0; j < RealFft::kBinCount; ++j) {
    bins_.real[j] = windowed_[2 * j];
    bins_.imag[j] = windowed_[2 * j + 1];
  }
}

void SpectrumAnalysis::measureMagnitudes() {
  for (std::size_t k = 0; k < magnitudes_.size(); ++k) {
    magnitudes_[k] = std::sqrt(bins_.real[k] * bins_.real[k] + bins_.imag[k] * bins_.imag[k]);
  }
}

}  // namespace voxtrel
