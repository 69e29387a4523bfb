#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "voxtrel/overlay/SpectrumBands.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"

namespace voxtrel {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::FloatEq;

std::vector<std::pair<int, int>> inclusiveRanges(double sampleRateHz) {
  std::vector<std::pair<int, int>> ranges;
  for (const auto& [first, end] : bandEdges(sampleRateHz)) ranges.emplace_back(first, end - 1);
  return ranges;
}

// The edges in extended precision, the last upper edge just below 255.
BandEdges edgesInExtendedPrecision(double sampleRateHz) {
  const long double minBin = std::max(1.0L, std::floor(20480.0L / (sampleRateHz * 0.5L)));
  const long double logMin = std::log10(minBin);
  const long double span = std::log10(254.9999L) - logMin;
  const auto edge = [&](int i) {
    return static_cast<int>(std::pow(10.0L, logMin + span * static_cast<long double>(i) / 14.0L) +
                            1e-6L);
  };
  BandEdges edges;
  for (int i = 0; i < kBandCount; ++i) {
    edges.at(static_cast<std::size_t>(i)) = {edge(i), std::max(edge(i) + 1, edge(i + 1))};
  }
  return edges;
}

TEST(SpectrumBands, MatchTheTableWhereEightyHertzLiesInBinOneOrBelow) {
  const auto table = ElementsAre(
      std::pair(1, 1), std::pair(1, 1), std::pair(2, 2), std::pair(3, 3), std::pair(4, 6),
      std::pair(7, 9), std::pair(10, 14), std::pair(15, 22), std::pair(23, 34), std::pair(35, 51),
      std::pair(52, 76), std::pair(77, 114), std::pair(115, 170), std::pair(171, 253));
  for (const double rate : {20481.0, 22050.0, 32000.0, 44100.0, 48000.0, 88200.0, 96000.0, 176400.0,
                            192000.0, 384000.0}) {
    EXPECT_THAT(inclusiveRanges(rate), table) << rate;
  }
}

TEST(SpectrumBands, BeginHigherAtLowSampleRates) {
  EXPECT_EQ(bandEdges(8000).front().first, 5);
  EXPECT_EQ(bandEdges(16000).front().first, 2);
  EXPECT_EQ(bandEdges(20480).front().first, 2);
  EXPECT_EQ(bandEdges(20481).front().first, 1);
}

TEST(SpectrumBands, AgreeWithExtendedPrecisionFrom8To192Kilohertz) {
  for (double rate = 8000; rate <= 192000; rate += 50) {
    EXPECT_EQ(bandEdges(rate), edgesInExtendedPrecision(rate)) << rate;
  }
}

TEST(SpectrumBands, NeverReachBin254OrBinZero) {
  for (double rate = 1000; rate < 50000; rate *= 1.01) {
    for (const auto& [first, end] : bandEdges(rate)) {
      EXPECT_GE(first, 1) << rate;
      EXPECT_LE(end, 254) << rate;
    }
  }
}

TEST(SpectrumBands, AreEmptyAboveTheLastBin) {
  EXPECT_THAT(bandEdges(100), Each(BinRange{}));  // 80 Hz would be bin 409
  // Here it would be 262; the edges fall from there to 254 and pass bin 255 in the last two bands.
  BandEdges expected{};
  expected[12] = expected[13] = {255, 256};
  EXPECT_EQ(bandEdges(156), expected);
}

TEST(SpectrumBands, NeverBeginBelowBinOneEvenAtANegativeOrInfiniteSampleRate) {
  EXPECT_EQ(bandEdges(-48000), bandEdges(48000));
  EXPECT_EQ(bandEdges(std::numeric_limits<double>::infinity()), bandEdges(48000));
}

TEST(SpectrumBandsDeathTest, EndTheProcessWhenTheBinOfEightyHertzIsNoInteger) {
  EXPECT_DEATH(bandEdges(0.0), "the sample rate gives no frequency bins");
  EXPECT_DEATH(bandEdges(-0.0), "the sample rate gives no frequency bins");
  EXPECT_DEATH(bandEdges(std::numeric_limits<double>::quiet_NaN()), "no frequency bins");
  EXPECT_DEATH(bandEdges(1e-20), "the sample rate gives no frequency bins");  // finite, but 4e24
}

TEST(SpectrumBands, HoldTheMeanOfTheirBins) {
  std::array<float, 256> magnitudes{};
  for (std::size_t k = 0; k < magnitudes.size(); ++k) magnitudes.at(k) = static_cast<float>(k);
  const BandEdges edges = bandEdges(48000);
  const BandLevels levels = bandMeans(PlainVectorMath(), magnitudes, edges);
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const auto [first, end] = edges.at(i);
    EXPECT_FLOAT_EQ(levels.at(i), static_cast<float>(first + end - 1) / 2.0F) << i;
  }
}

TEST(SpectrumBands, IgnoreBinsOutsideThem) {
  std::array<float, 256> magnitudes{};
  magnitudes[0] = magnitudes[254] = magnitudes[255] = 1e9F;
  EXPECT_THAT(bandMeans(PlainVectorMath(), magnitudes, bandEdges(48000)), Each(0.0F));
}

TEST(SpectrumBands, AreZeroWhereEmpty) {
  std::array<float, 256> magnitudes{};
  magnitudes.fill(1.0F);
  EXPECT_THAT(bandMeans(PlainVectorMath(), magnitudes, BandEdges{}), Each(0.0F));
}

TEST(NormalizedLevels, HaveAPeakOfExactlyOne) {
  // For some of these, value * (1 / value) is less than 1.
  for (float peak = 1.1e-6F; peak < 1e6F; peak *= 1.0137F) {
    BandLevels levels{};
    levels[3] = peak;
    levels[4] = peak * 0.5F;
    const BandLevels scaled = normalized(levels);
    EXPECT_EQ(scaled[3], 1.0F) << peak;
    EXPECT_FLOAT_EQ(scaled[4], 0.5F) << peak;
    EXPECT_EQ(scaled[5], 0.0F) << peak;
  }
}

TEST(NormalizedLevels, LeaveSilenceUnscaled) {
  BandLevels levels{};
  levels.fill(1e-7F);
  levels[2] = 1e-6F;
  EXPECT_EQ(normalized(levels), levels);
  levels[2] = std::nextafter(1e-6F, 1.0F);
  EXPECT_EQ(normalized(levels)[2], 1.0F);
}

TEST(SmoothedLevels, CloseFiftyFivePercentOfARiseInAFrame) {
  BandLevels energy{};
  energy.fill(1.0F);
  BandLevels level = smoothedTowards(energy, BandLevels{});
  EXPECT_THAT(level, Each(FloatEq(0.55F)));
  level = smoothedTowards(energy, level);
  EXPECT_THAT(level, Each(FloatEq(0.7975F)));
}

TEST(SmoothedLevels, AreBelowATenthFifteenFramesAfterFullLevel) {
  BandLevels level{};
  level.fill(1.0F);
  level = smoothedTowards(BandLevels{}, level);
  EXPECT_THAT(level, Each(FloatEq(0.85F)));
  for (int frame = 1; frame < 15; ++frame) level = smoothedTowards(BandLevels{}, level);
  for (const float bar : level) EXPECT_NEAR(bar, 0.087F, 0.0005F);
}

TEST(SmoothedLevels, StayBetweenZeroAndOne) {
  BandLevels energy{}, level{};
  energy.fill(7.0F);
  EXPECT_THAT(smoothedTowards(energy, level), Each(1.0F));
  energy.fill(-7.0F);
  EXPECT_THAT(smoothedTowards(energy, level), Each(0.0F));
}

TEST(SmoothedLevels, RecoverFromNaN) {
  BandLevels energy{}, level{};
  energy.fill(std::numeric_limits<float>::quiet_NaN());
  level = smoothedTowards(energy, level);
  energy.fill(0.0F);
  EXPECT_THAT(smoothedTowards(energy, level), Each(FloatEq(0.85F)));
}

}  // namespace
}  // namespace voxtrel
