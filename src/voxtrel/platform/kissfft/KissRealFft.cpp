#include "voxtrel/platform/kissfft/KissRealFft.h"

#include <kiss_fftr.h>

#include <array>

namespace voxtrel {

void KissRealFft::PlanDeleter::operator()(kiss_fftr_state* plan) const {
  kiss_fftr_free(plan);
}

std::unique_ptr<RealFft> KissRealFft::make() {
  Plan plan(kiss_fftr_alloc(static_cast<int>(kSize), 0, nullptr, nullptr));
  if (!plan) return nullptr;
  return std::unique_ptr<RealFft>(new KissRealFft(std::move(plan)));
}

void KissRealFft::forward(std::span<const float, kSize> samples, SplitComplex& bins) {
  std::array<kiss_fft_cpx, kBinCount + 1> plain;
  kiss_fftr(plan_.get(), samples.data(), plain.data());
  for (std::size_t k = 0; k < kBinCount; ++k) {
    bins.real[k] = 2.0F * plain[k].r;
    bins.imag[k] = 2.0F * plain[k].i;
  }
  bins.imag[0] = 2.0F * plain[kBinCount].r;
}

}  // namespace voxtrel
