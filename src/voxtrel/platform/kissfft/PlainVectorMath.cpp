#include "voxtrel/platform/kissfft/PlainVectorMath.h"

#include <array>
#include <cmath>
#include <numbers>

#include "voxtrel/platform/kissfft/KissRealFft.h"

namespace voxtrel {

void PlainVectorMath::hannWindow(std::span<float> window) const {
  const double turn = 2.0 * std::numbers::pi / static_cast<double>(window.size());
  for (std::size_t n = 0; n < window.size(); ++n) {
    window[n] = static_cast<float>(0.8165 * (1.0 - std::cos(turn * static_cast<double>(n))));
  }
}

void PlainVectorMath::multiply(std::span<const float> one, std::span<const float> other,
                               std::span<float> products) const {
  for (std::size_t k = 0; k < products.size(); ++k) products[k] = one[k] * other[k];
}

void PlainVectorMath::deinterleave(std::span<const float, RealFft::kSize> samples,
                                   RealFft::SplitComplex& pairs) const {
  for (std::size_t j = 0; j < RealFft::kBinCount; ++j) {
    pairs.real[j] = samples[2 * j];
    pairs.imag[j] = samples[2 * j + 1];
  }
}

void PlainVectorMath::magnitudes(const RealFft::SplitComplex& bins,
                                 std::span<float, RealFft::kBinCount> results) const {
  for (std::size_t k = 0; k < results.size(); ++k) {
    results[k] = std::sqrt(bins.real[k] * bins.real[k] + bins.imag[k] * bins.imag[k]);
  }
}

/// Four partial sums: the compiler may not reorder a float sum, but it can vectorise these.
float PlainVectorMath::mean(std::span<const float> values) const {
  std::array<float, 4> lanes{};
  std::size_t i = 0;
  for (; i + lanes.size() <= values.size(); i += lanes.size()) {
    for (std::size_t lane = 0; lane < lanes.size(); ++lane) lanes[lane] += values[i + lane];
  }
  float total = (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
  for (; i < values.size(); ++i) total += values[i];
  return total / static_cast<float>(values.size());
}

std::unique_ptr<RealFft> PlainVectorMath::makeRealFft() const {
  return KissRealFft::make();
}

}  // namespace voxtrel
