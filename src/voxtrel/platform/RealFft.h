#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace voxtrel {

/// The forward Fourier transform of 512 real samples.
/// Thread: one at a time.
class RealFft {
 public:
  static constexpr std::size_t kSize = 512;
  static constexpr std::size_t kBinCount = kSize / 2;

  /// Complex values, as separate real and imaginary parts.
  struct SplitComplex {
    alignas(32) std::array<float, kBinCount> real;
    alignas(32) std::array<float, kBinCount> imag;
  };

  virtual ~RealFft() = default;

  /// Element k holds bin k; element 0 holds bin 0 in its real and bin 256 in its imaginary part.
  /// Every value is twice the sum of x[n] exp(-2 pi i k n / 512). Allocates nothing.
  virtual void forward(std::span<const float, kSize> samples, SplitComplex& bins) = 0;
};

}  // namespace voxtrel
