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
  meter.feed(samples);
  return meter.isSilence();
}

TEST(SpeechMeterTest, NoSamplesAndZerosAreSilence) {
  EXPECT_TRUE(isSilence({}));
  EXPECT_TRUE(isSilence(square(160'000, 0)));
}

TEST(SpeechMeterTest, SoundAtTheMinimumLevelIsNoSilence) {
  EXPECT_TRUE(isSilence(square(16'000, 32)));
  EXPECT_FALSE(isSilence(square(16'000, 33)));
}

TEST(SpeechMeterTest, OneLoudBlockIsEnough) {
  auto samples = square(160'000, 0);
  const auto loud = square(SpeechMeter::kBlockSamples, 40);
  std::copy(loud.begin(), loud.end(), samples.begin() + 80'000);
  EXPECT_FALSE(isSilence(samples));
}

TEST(SpeechMeterTest, AConstantOffsetIsSilence) {
  EXPECT_TRUE(isSilence(square(16'000, 10, 3000)));
  EXPECT_FALSE(isSilence(square(16'000, 40, 3000)));
}

TEST(SpeechMeterTest, TheSizeOfThePiecesDoesNotMatter) {
  const auto samples = square(SpeechMeter::kBlockSamples, 40);
  SpeechMeter meter;
  for (const std::int16_t sample : samples) {
    EXPECT_TRUE(meter.isSilence());
    meter.feed({&sample, 1});
  }
  EXPECT_FALSE(meter.isSilence());
  EXPECT_EQ(meter.samples(), samples.size());
}

TEST(SpeechMeterTest, TheLoudestSoundDoesNotOverflow) {
  EXPECT_FALSE(isSilence(square(4'800'000, 32767)));
}

}  // namespace
}  // namespace voxtrel::quillback
