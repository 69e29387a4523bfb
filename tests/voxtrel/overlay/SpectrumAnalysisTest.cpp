#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "support/FakeVectorMath.h"
#include "support/Samples.h"
#include "support/SpectrumOracle.h"
#include "voxtrel/overlay/SpectrumAnalysis.h"
#include "voxtrel/platform/kissfft/KissRealFft.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"

namespace voxtrel {
namespace {

using ::testing::Each;
using testing::impulse;
using testing::noise;
using testing::sineAtBin;

const PlainVectorMath kMath;

void expectExact(const std::vector<float>& samples, const std::string& what) {
  testing::expectExactLevels(kMath, samples, what);
}

std::vector<float> measured(const std::vector<float>& samples, double sampleRateHz = 48000) {
  const BandLevels levels = SpectrumAnalysis(kMath).analyse(samples, sampleRateHz);
  return {levels.begin(), levels.end()};
}

TEST(SpectrumAnalysis, MeasuresSinesOnBinsAsADirectTransformDoes) {
  for (const double bin : {1.0, 2.0, 5.0, 17.0, 64.0, 128.0, 200.0, 253.0}) {
    expectExact(sineAtBin(bin), "sine at bin " + std::to_string(bin));
  }
}

TEST(SpectrumAnalysis, MeasuresSinesBetweenBinsAsADirectTransformDoes) {
  for (const double bin : {1.5, 3.25, 10.667, 33.5, 99.9, 252.5}) {
    expectExact(sineAtBin(bin), "sine at bin " + std::to_string(bin));
  }
}

TEST(SpectrumAnalysis, MeasuresLoudAndQuietNoiseAsADirectTransformDoes) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    expectExact(noise(seed), "noise");
    expectExact(noise(seed, 1e-4), "quiet noise");
  }
}

TEST(SpectrumAnalysis, MeasuresImpulsesAsADirectTransformDoes) {
  for (const std::size_t position : {1U, 2U, 100U, 255U, 256U, 511U}) {
    expectExact(impulse(position), "impulse at " + std::to_string(position));
  }
}

TEST(SpectrumAnalysis, MeasuresNothingInSilence) {
  EXPECT_THAT(measured(std::vector<float>(512, 0.0F)), Each(0.0F));
  EXPECT_THAT(measured({}), Each(0.0F));
  EXPECT_THAT(measured(impulse(0)), Each(0.0F)) << "the window begins with zero";
}

TEST(SpectrumAnalysis, PadsAShortBlockWithZerosWithoutRescalingTheWindow) {
  std::vector<float> block = noise(4);
  for (const std::size_t length : {1U, 2U, 100U, 511U}) {
    std::vector<float> filled(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(length));
    const std::vector<float> cut = filled;
    filled.resize(512, 0.0F);
    EXPECT_EQ(measured(cut), measured(filled)) << length;
    expectExact(cut, "short block");
  }
}

TEST(SpectrumAnalysis, KeepsNothingOfTheBlockBefore) {
  SpectrumAnalysis analysis(kMath);
  const std::vector<float> quiet(3, 0.5F);
  const BandLevels fresh = analysis.analyse(quiet, 48000);
  (void)analysis.analyse(noise(1), 16000);
  EXPECT_EQ(analysis.analyse(quiet, 48000), fresh);
}

TEST(SpectrumAnalysis, IgnoresSamplesAfterTheFirst512) {
  const std::vector<float> block = noise(5);
  std::vector<float> longer = block;
  const std::vector<float> more = noise(6, 100.0, 5000);
  longer.insert(longer.end(), more.begin(), more.end());
  EXPECT_EQ(measured(longer), measured(block));
}

TEST(SpectrumAnalysis, MeasuresThePackedSamplesWithoutATransform) {
  std::vector<float> samples(512, 0.0F);
  samples[256] = 3.0F;  // the window's middle, 1.633: pair 128, in band 12
  samples[257] = 4.0F;
  testing::FakeVectorMath math;
  math.hasTransform = false;
  const BandLevels levels = SpectrumAnalysis(math).analyse(samples, 48000);
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const float expected = i == 12 ? 1.633F * 5.0F / 56.0F : 0.0F;
    EXPECT_NEAR(levels[i], expected, 1e-4F) << i;
  }
}

TEST(KissRealFft, GivesTwiceTheSumsWithTheNyquistTermInBinZero) {
  const auto fft = KissRealFft::make();
  std::array<float, 512> samples{};
  for (std::size_t n = 0; n < 512; ++n) {
    const double turn = 2.0 * std::numbers::pi * 7.0 * static_cast<double>(n) / 512.0;
    samples[n] = static_cast<float>(0.25 + (n % 2 == 0 ? 0.5 : -0.5) + std::sin(turn));
  }
  RealFft::SplitComplex bins;
  fft->forward(samples, bins);
  EXPECT_NEAR(bins.real[0], 2 * 512 * 0.25F, 1e-3F);
  EXPECT_NEAR(bins.imag[0], 2 * 512 * 0.5F, 1e-3F);
  EXPECT_NEAR(bins.real[7], 0.0F, 1e-3F);
  EXPECT_NEAR(bins.imag[7], -512.0F, 1e-3F);
  EXPECT_NEAR(bins.imag[8], 0.0F, 1e-3F);
}

}  // namespace
}  // namespace voxtrel
