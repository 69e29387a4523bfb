#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "support/Samples.h"
#include "support/SpectrumOracle.h"
#include "support/macos/Growth.h"
#include "voxtrel/overlay/SpectrumAnalysis.h"
#include "voxtrel/platform/macos/vdsp/AccelerateMath.h"

namespace voxtrel::testing {
namespace {

TEST(AccelerateMathTest, MeasuresSinesAsADirectTransformDoes) {
  for (const double bin : {1.0, 2.0, 3.25, 10.667, 17.0, 33.5, 64.0, 128.0, 252.5, 253.0}) {
    expectExactLevels(AccelerateMath(), sineAtBin(bin), "sine at bin " + std::to_string(bin));
  }
}

TEST(AccelerateMathTest, MeasuresNoiseAndImpulsesAsADirectTransformDoes) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    expectExactLevels(AccelerateMath(), noise(seed), "noise");
    expectExactLevels(AccelerateMath(), noise(seed, 1e-4), "quiet noise");
  }
  for (const std::size_t position : {1U, 100U, 256U, 511U}) {
    expectExactLevels(AccelerateMath(), impulse(position), "impulse");
  }
}

TEST(AccelerateMathTest, PadsAShortBlockWithZeros) {
  std::vector<float> block = noise(4);
  for (const std::size_t length : {0U, 1U, 2U, 100U, 511U}) {
    block.resize(length);
    expectExactLevels(AccelerateMath(), block, "short block");
    block = noise(4);
  }
}

TEST(AccelerateMathTest, GivesTwiceTheSumsWithTheNyquistTermInBinZero) {
  const auto fft = AccelerateMath().makeRealFft();
  std::array<float, RealFft::kSize> samples{};
  for (std::size_t n = 0; n < samples.size(); ++n) {
    const double turn = 2.0 * std::numbers::pi * 7.0 * static_cast<double>(n) / 512.0;
    samples[n] = static_cast<float>(0.25 + (n % 2 == 0 ? 0.5 : -0.5) + std::sin(turn));
  }
  RealFft::SplitComplex bins;
  fft->forward(samples, bins);
  EXPECT_NEAR(bins.real[0], 2 * 512 * 0.25F, 1e-3F);
  EXPECT_NEAR(bins.imag[0], 2 * 512 * 0.5F, 1e-3F);
  EXPECT_NEAR(bins.imag[7], -512.0F, 1e-3F);
  EXPECT_NEAR(bins.imag[8], 0.0F, 1e-3F);
}

TEST(AccelerateMathTest, SplitsSamplesIntoPairs) {
  std::array<float, RealFft::kSize> samples{};
  for (std::size_t n = 0; n < samples.size(); ++n) samples[n] = static_cast<float>(n);
  RealFft::SplitComplex pairs;
  AccelerateMath().deinterleave(samples, pairs);
  EXPECT_EQ(pairs.real[0], 0.0F);
  EXPECT_EQ(pairs.imag[0], 1.0F);
  EXPECT_EQ(pairs.real[255], 510.0F);
  EXPECT_EQ(pairs.imag[255], 511.0F);
}

TEST(AccelerateMathTest, KeepsNothingOfAThousandTransforms) {
  const std::array<float, RealFft::kSize> samples{};
  expectNoGrowth([&] {
    RealFft::SplitComplex bins;
    AccelerateMath().makeRealFft()->forward(samples, bins);
  });
}

}  // namespace
}  // namespace voxtrel::testing
