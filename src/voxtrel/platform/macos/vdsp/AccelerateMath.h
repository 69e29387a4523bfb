#pragma once

#include "voxtrel/platform/VectorMath.h"

namespace voxtrel {

/// VectorMath over Accelerate's vDSP.
/// Thread: any.
class AccelerateMath final : public VectorMath {
 public:
  void hannWindow(std::span<float> window) const override;
  void multiply(std::span<const float> one, std::span<const float> other,
                std::span<float> products) const override;
  void deinterleave(std::span<const float, RealFft::kSize> samples,
                    RealFft::SplitComplex& pairs) const override;
  void magnitudes(const RealFft::SplitComplex& bins,
                  std::span<float, RealFft::kBinCount> results) const override;
  float mean(std::span<const float> values) const override;
  std::unique_ptr<RealFft> makeRealFft() const override;
};

}  // namespace voxtrel
