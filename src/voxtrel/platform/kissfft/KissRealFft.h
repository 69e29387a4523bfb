#pragma once

#include <memory>

#include "voxtrel/platform/RealFft.h"

struct kiss_fftr_state;

namespace voxtrel {

/// RealFft over the KissFFT library.
/// Thread: one at a time.  Owns: the library's plan.
/// Fails by: `make` returns null.
class KissRealFft : public RealFft {
 public:
  static std::unique_ptr<RealFft> make();

  void forward(std::span<const float, kSize> samples, SplitComplex& bins) override;

 private:
  struct PlanDeleter {
    void operator()(kiss_fftr_state* plan) const;
  };
  using Plan = std::unique_ptr<kiss_fftr_state, PlanDeleter>;

  explicit KissRealFft(Plan plan) : plan_(std::move(plan)) {}

  Plan plan_;
};

}  // namespace voxtrel
