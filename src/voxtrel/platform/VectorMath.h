#pragma once

#include <memory>
#include <span>

#include "voxtrel/platform/RealFft.h"

namespace voxtrel {

/// The vector steps of the spectrum analysis, in single precision. A desktop brings the library that is
/// best on its processors. Allocates nothing but the transform.
/// Thread: any.
class VectorMath {
 public:
  virtual ~VectorMath() = default;

  /// Fills in 0.8165 (1 - cos(2 pi n / N)): a periodic Hann window with a mean square of about 1.
  virtual void hannWindow(std::span<float> window) const = 0;

  /// The products of the elements of `one` and `other`; all three have the same length.
  virtual void multiply(std::span<const float> one, std::span<const float> other,
                        std::span<float> products) const = 0;

  /// Sets real[j] and imag[j] to elements 2 j and 2 j + 1 of `samples`.
  virtual void deinterleave(std::span<const float, RealFft::kSize> samples,
                            RealFft::SplitComplex& pairs) const = 0;

  /// The absolute value of each complex number.
  virtual void magnitudes(const RealFft::SplitComplex& bins,
                          std::span<float, RealFft::kBinCount> results) const = 0;

  /// The arithmetic mean of at least one value.
  virtual float mean(std::span<const float> values) const = 0;

  /// Null if out of memory.
  virtual std::unique_ptr<RealFft> makeRealFft() const = 0;
};

}  // namespace voxtrel
