#include "voxtrel/platform/macos/vdsp/AccelerateMath.h"

#include <Accelerate/Accelerate.h>

#include <bit>

namespace voxtrel {
namespace {

constexpr vDSP_Length kLog2Size = std::bit_width(RealFft::kSize) - 1;

DSPSplitComplex splitOf(RealFft::SplitComplex& values) {
  return {values.real.data(), values.imag.data()};
}

/// vDSP takes the samples as pairs, which lie in memory as they do.
void splitPairs(std::span<const float, RealFft::kSize> samples, RealFft::SplitComplex& pairs) {
  const DSPSplitComplex split = splitOf(pairs);
  vDSP_ctoz(reinterpret_cast<const DSPComplex*>(samples.data()), 2, &split, 1, RealFft::kBinCount);
}

/// The packed real transform of vDSP, whose values are twice the sums already.
/// Thread: one at a time.  Owns: vDSP's tables.
class AccelerateFft final : public RealFft {
 public:
  explicit AccelerateFft(FFTSetup setup) : setup_(setup) {}
  ~AccelerateFft() override { vDSP_destroy_fftsetup(setup_); }
  AccelerateFft(const AccelerateFft&) = delete;
  AccelerateFft& operator=(const AccelerateFft&) = delete;

  void forward(std::span<const float, kSize> samples, SplitComplex& bins) override {
    splitPairs(samples, bins);
    const DSPSplitComplex split = splitOf(bins);
    vDSP_fft_zrip(setup_, &split, 1, kLog2Size, kFFTDirection_Forward);
  }

 private:
  FFTSetup setup_;
};

}  // namespace

void AccelerateMath::hannWindow(std::span<float> window) const {
  vDSP_hann_window(window.data(), window.size(), vDSP_HANN_NORM);
}

void AccelerateMath::multiply(std::span<const float> one, std::span<const float> other,
                              std::span<float> products) const {
  vDSP_vmul(one.data(), 1, other.data(), 1, products.data(), 1, products.size());
}

void AccelerateMath::deinterleave(std::span<const float, RealFft::kSize> samples,
                                  RealFft::SplitComplex& pairs) const {
  splitPairs(samples, pairs);
}

void AccelerateMath::magnitudes(const RealFft::SplitComplex& bins,
                                std::span<float, RealFft::kBinCount> results) const {
  // vDSP reads only, but its type for split values has no form for constants.
  const DSPSplitComplex split{const_cast<float*>(bins.real.data()),
                              const_cast<float*>(bins.imag.data())};
  vDSP_zvabs(&split, 1, results.data(), 1, results.size());
}

float AccelerateMath::mean(std::span<const float> values) const {
  float result = 0;
  vDSP_meanv(values.data(), 1, &result, values.size());
  return result;
}

std::unique_ptr<RealFft> AccelerateMath::makeRealFft() const {
  const FFTSetup setup = vDSP_create_fftsetup(kLog2Size, kFFTRadix2);
  if (setup == nullptr) return nullptr;
  return std::make_unique<AccelerateFft>(setup);
}

}  // namespace voxtrel
