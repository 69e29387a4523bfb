#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "support/WholeWav.h"

namespace voxtrel::quillback {
namespace {

using test::resampled;

std::vector<float> tone(double frequencyHz, int rateHz, double seconds = 0.5) {
  std::vector<float> samples(static_cast<std::size_t>(rateHz * seconds));
  for (std::size_t at = 0; at < samples.size(); ++at) {
    samples[at] = static_cast<float>(
        0.5 * std::sin(2 * std::numbers::pi * frequencyHz * static_cast<double>(at) / rateHz));
  }
  return samples;
}

/// Root mean square of the middle, away from the filter's effect at the ends.
double loudness(const std::vector<std::int16_t>& samples) {
  double sum = 0;
  const std::size_t quarter = samples.size() / 4;
  for (std::size_t at = quarter; at < 3 * quarter; ++at) {
    sum += static_cast<double>(samples[at]) * samples[at];
  }
  return std::sqrt(sum / static_cast<double>(2 * quarter)) / 32768;
}

TEST(Resampler, AnyRateGivesTheSameDurationAndLoudness) {
  for (const int rateHz : {1000, 8000, 11025, 16000, 22050, 44100, 48000, 96000, 384000}) {
    const auto samples = resampled(tone(300, rateHz), rateHz);
    EXPECT_NEAR(static_cast<double>(samples.size()), 8000, 2) << rateHz;
    EXPECT_NEAR(loudness(samples), 0.5 / std::numbers::sqrt2, 0.005) << rateHz;
  }
}

TEST(Resampler, ATonesPhaseIsKept) {
  const auto samples = resampled(tone(250, 48000), 48000);
  const auto expected = resampled(tone(250, 16000), 16000);
  for (std::size_t at = 2000; at < 6000; ++at) EXPECT_NEAR(samples[at], expected[at], 60) << at;
}

TEST(Resampler, FrequenciesAboveTheOutputsRangeDoNotAlias) {
  EXPECT_LT(loudness(resampled(tone(11'000, 48000), 48000)), 0.001);
}

TEST(Resampler, FullScaleDoesNotWrapAround) {
  const std::vector<float> edges = {1.0F, -1.0F, 1.5F, -1.5F};
  EXPECT_THAT(resampled(edges, 16000), testing::ElementsAre(32767, -32768, 32767, -32768));
}

TEST(Resampler, NothingGivesNothing) {
  EXPECT_TRUE(resampled({}, 16000).empty());
  EXPECT_TRUE(resampled({}, 44100).empty());
}

}  // namespace
}  // namespace voxtrel::quillback
