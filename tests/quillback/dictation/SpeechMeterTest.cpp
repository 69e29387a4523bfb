#include <gtest/gtest.h>

#include <vector>

#include "quillback/dictation/SpeechMeter.h"

namespace voxtrel::quillback {
namespace {

std::vector<std::int16_t> square(std::size_t samples, int level, int offset = 0) {
  std::vector<std::int16_t> wave(samples);
  for (std::size_t i = 0; i < samples; ++i) {
    wave[i] = static_cast<std::int16_t>(offset + (i % 2 == 0 ? level : -level));
  }
  return wave;
}

bool isSilence(const std::vector<std::int16_t>& samples) {
  SpeechMeter meter;
  meter.hear(samples);
  return meter.isSilence();
}

TEST(SpeechMeter, TakesNothingForSilence) {
  EXPECT_TRUE(isSilence({}));
  EXPECT_TRUE(isSilence(square(160'000, 0)));
}

TEST(SpeechMeter, HearsWhatIsAsLoudAsTheFaintestSpeech) {
  EXPECT_TRUE(isSilence(square(16'000, 32)));
  EXPECT_FALSE(isSilence(square(16'000, 33)));
}

TEST(SpeechMeter, OneLoudBlockIsEnough) {
  auto samples = square(160'000, 0);
  const auto loud = square(SpeechMeter::kBlockSamples, 40);
  std::copy(loud.begin(), loud.end(), samples.begin() + 80'000);
  EXPECT_FALSE(isSilence(samples));
}

TEST(SpeechMeter, AConstantOffsetIsNoSound) {
  EXPECT_TRUE(isSilence(square(16'000, 10, 3000)));
  EXPECT_FALSE(isSilence(square(16'000, 40, 3000)));
}

TEST(SpeechMeter, DoesNotCareInWhichPiecesSamplesCome) {
  const auto samples = square(SpeechMeter::kBlockSamples, 40);
  SpeechMeter meter;
  for (const std::int16_t sample : samples) {
    EXPECT_TRUE(meter.isSilence());
    meter.hear({&sample, 1});
  }
  EXPECT_FALSE(meter.isSilence());
  EXPECT_EQ(meter.samples(), samples.size());
}

TEST(SpeechMeter, WithstandsTheLoudestSound) {
  EXPECT_FALSE(isSilence(square(4'800'000, 32767)));
}

}  // namespace
}  // namespace voxtrel::quillback
