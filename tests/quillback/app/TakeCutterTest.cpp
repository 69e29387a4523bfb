#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <vector>

#include "quillback/app/TakeCutter.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;

constexpr std::size_t kSecond = kSampleRateHz;

struct TakeCutterTest : testing::Test {
  void add(const std::vector<std::int16_t>& sound, std::size_t block) {
    for (std::span<const std::int16_t> rest = sound; !rest.empty();) {
      const auto some = rest.first(std::min(rest.size(), block));
      cutter.add(some);
      rest = rest.subspan(some.size());
      mostHeld = std::max(mostHeld, sound.size() - rest.size() - heard.size());
    }
  }
  std::vector<std::size_t> finish() {
    cutter.finish();
    return takes;
  }

  std::vector<std::int16_t> heard;
  std::vector<std::size_t> takes = {0};
  std::size_t mostHeld = 0;
  TakeCutter cutter{{[this](std::span<const std::int16_t> samples) {
                       heard.insert(heard.end(), samples.begin(), samples.end());
                       takes.back() += samples.size();
                     },
                     [this] { takes.push_back(0); }}};
};

std::vector<std::int16_t> noise(std::size_t samples) {
  std::mt19937 random(5);
  std::vector<std::int16_t> sound(samples);
  for (std::int16_t& sample : sound) sample = static_cast<std::int16_t>(random() % 8000);
  return sound;
}

void silence(std::vector<std::int16_t>& sound, std::size_t from, std::size_t to) {
  for (std::size_t at = from; at < to; ++at) sound[at] = 0;
}

TEST_F(TakeCutterTest, FiveMinutesAreOneTake) {
  const auto sound = noise(300 * kSecond);
  add(sound, 4096);
  EXPECT_THAT(finish(), ElementsAre(300 * kSecond));
  EXPECT_EQ(heard, sound);
}

TEST_F(TakeCutterTest, LongerSoundIsDividedInAPause) {
  auto sound = noise(310 * kSecond);
  silence(sound, 281 * kSecond, 282 * kSecond);
  add(sound, 4096);
  ASSERT_EQ(finish().size(), 2U);
  EXPECT_GT(takes[0], 281 * kSecond);
  EXPECT_LT(takes[0], 282 * kSecond);
  EXPECT_EQ(heard, sound);
}

TEST_F(TakeCutterTest, TwentyMinutesLoseNoSampleAndHoldHalfAMinute) {
  const auto sound = noise(1200 * kSecond);
  add(sound, 100'000);
  EXPECT_GE(finish().size(), 4U);
  for (const std::size_t take : takes) EXPECT_LE(take, TakeCutter::kMaxSamples);
  EXPECT_EQ(heard, sound);
  EXPECT_LE(mostHeld, TakeCutter::kSearchedSamples);
}

TEST_F(TakeCutterTest, OneBlockIsDividedAsManyAre) {
  const auto sound = noise(700 * kSecond);
  add(sound, sound.size());
  const auto atOnce = finish();
  takes = {0};
  heard.clear();
  add(sound, 999);
  EXPECT_EQ(finish(), atOnce);
}

TEST(QuietestMoment, IsTheMiddleOfTheQuietestStretch) {
  auto sound = noise(30 * kSecond);
  silence(sound, 10 * kSecond, 10 * kSecond + kSecond / 10);  // too short for a pause
  silence(sound, 20 * kSecond, 20 * kSecond + kSecond / 2);
  EXPECT_NEAR(static_cast<double>(quietestMoment(sound)), 20.25 * kSecond, 0.1 * kSecond);
}

}  // namespace
}  // namespace voxtrel::quillback
