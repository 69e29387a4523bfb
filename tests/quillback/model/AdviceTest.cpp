#include <gtest/gtest.h>

#include "quillback/model/Advice.h"

namespace voxtrel::quillback {
namespace {

std::string advised(double timeFactor, const Spoken& spoken = {}) {
  const ModelPin* const pin = advise(pinnedModels(), timeFactor, spoken);
  return pin == nullptr ? "none" : pin->model;
}

TEST(AdviceTest, TheTimeGrowsWithTheMachinesSlowness) {
  const ModelPin* const base = pinNamed(pinnedModels(), "base");
  EXPECT_DOUBLE_EQ(expectedSeconds(*base, 1.0), 0.6);
  EXPECT_DOUBLE_EQ(expectedSeconds(*base, 2.0), 1.2);
}

TEST(AdviceTest, TheMostAccurateModelWithinOneSecondIsAdvised) {
  EXPECT_EQ(advised(1.0), "base");
  EXPECT_EQ(advised(1.66), "base");
  EXPECT_EQ(advised(1.68), "tiny");
  EXPECT_EQ(advised(0.5), "small");
  EXPECT_EQ(advised(0.01), "large-v3");
}

TEST(AdviceTest, WhereNoneIsWithinOneSecondTheFastestIsAdvised) {
  EXPECT_EQ(advised(100), "tiny");
  EXPECT_EQ(advised(100, {"en"}), "tiny.en");
}

TEST(AdviceTest, AModelThatTakesLongerThanTheSpeechIsAdvisedAgainst) {
  constexpr double kSlower = 1.5;
  EXPECT_EQ(
      adviceAgainst("large-v3", pinnedModels(), kSlower, {}),
      "large-v3 takes about 69 s for 5 s of speech on this machine, base about 0.9 s. To change "
      "over, run: quillback setup --model base && quillback use base");
  EXPECT_NE(adviceAgainst("large-v3", pinnedModels(), 5.01 / 46, {}), "");
  EXPECT_EQ(adviceAgainst("large-v3", pinnedModels(), 4.99 / 46, {}), "");
  EXPECT_EQ(adviceAgainst("my-own", pinnedModels(), kSlower, {}), "");
  EXPECT_EQ(adviceAgainst("tiny", pinnedModels(), 100, {}), "") << "it is the fastest";
}

TEST(AdviceTest, AnEnglishModelIsForThoseWhoChoseEnglish) {
  EXPECT_EQ(advised(1.0, {"en"}), "base.en");
  EXPECT_EQ(advised(1.0, {"auto", false, "en_GB.UTF-8"}), "base");
  EXPECT_EQ(advised(1.0, {"en", true}), "base");
}

TEST(AdviceTest, AEuropeanModelIsForEuropeanLanguages) {
  constexpr double kFast = 0.6;
  EXPECT_EQ(advised(kFast, {"de"}), "parakeet-v3-q4_0");
  EXPECT_EQ(advised(0.5, {"de"}), "parakeet-v3-q8_0");
  EXPECT_EQ(advised(kFast, {"ja"}), "base");
  EXPECT_EQ(advised(kFast, {"de", true}), "base");
}

TEST(AdviceTest, WithTheLanguageToBeDetectedTheLocaleCounts) {
  constexpr double kFast = 0.6;
  for (const char* locale : {"de_DE.UTF-8", "fr", "uk_UA", "sv@euro", "en_US.UTF-8"}) {
    EXPECT_EQ(advised(kFast, {"auto", false, locale}), "parakeet-v3-q4_0") << locale;
  }
  for (const char* locale : {"", "C", "C.UTF-8", "POSIX", "ja_JP.UTF-8", "den"}) {
    EXPECT_EQ(advised(kFast, {"auto", false, locale}), "base") << locale;
  }
}

TEST(AdviceTest, WithoutASuitableModelNoneIsAdvised) {
  EXPECT_EQ(advise({}, 1.0, {}), nullptr);
  EXPECT_EQ(advise({*pinNamed(pinnedModels(), "base.en")}, 1.0, {"de"}), nullptr);
}

}  // namespace
}  // namespace voxtrel::quillback
