#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "quillback/ports/Microphone.h"
#include "quillback/recognition/ThreadedRecogniser.h"
#include "quillback/recognition/sphinx/SphinxBackend.h"
#include "support/PostedLoop.h"
#include "support/SpeechTest.h"
#include "support/Voice.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;
using test::kPhrases;
using test::Voice;
using Samples = std::vector<std::int16_t>;

constexpr std::size_t kBlock = 160;  // 10 ms

/// The embedded recogniser on its thread, fed in pieces as a microphone does.
struct SphinxFixture : testing::Test {
  test::PostedLoop loop;
  Voice voice;
  std::optional<LoadReport> loaded;
  std::unique_ptr<ThreadedRecogniser> recogniser = std::make_unique<ThreadedRecogniser>(
      loop, std::make_unique<SphinxBackend>(sphinxModelFolder()),
      [this](const LoadReport& report) { loaded = report; });

  static void feed(Utterance& utterance, std::span<const std::int16_t> samples) {
    while (!samples.empty()) {
      const std::size_t count = std::min(samples.size(), kBlock);
      utterance.feed(samples.first(count));
      samples = samples.subspan(count);
    }
  }

  std::string textOf(const Samples& samples) {
    const auto utterance = recogniser->begin();
    feed(*utterance, samples);
    std::optional<std::string> text;
    utterance->finish([&text](const Transcription& result) { text = result.text; });
    EXPECT_TRUE(loop.runUntil([&text] { return text.has_value(); }));
    return text.value_or("no result");
  }

  Samples spoken(const std::string& text) { return Voice::samplesOf(voice.say(text)); }
};

long residentKilobytes() {
  std::ifstream statm("/proc/self/statm");
  long pages = 0;
  statm >> pages >> pages;
  return pages * ::sysconf(_SC_PAGESIZE) / 1024;
}

TEST_F(SphinxFixture, TheModelLoadsWithoutOutput) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  ASSERT_TRUE(loop.runUntil([this] { return loaded.has_value(); }));
  EXPECT_TRUE(loaded->isUsable);
  EXPECT_EQ(textOf(spoken("nice to meet you")), "nice to meet you");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(SphinxFixture, TheNinePhrasesAreRecognisedWordForWord) {
  for (const char* phrase : kPhrases) EXPECT_EQ(textOf(spoken(phrase)), phrase);
}

TEST_F(SphinxFixture, TheSameSoundGivesTheSameWordsWhateverWasSaidBefore) {
  // A voice that is hard to recognise: the smallest change gives other words.
  const Samples phrase = Voice::samplesOf(voice.say("thank you very much for your help", "en-us"));
  Samples quiet = spoken("happy birthday to you");
  for (std::int16_t& sample : quiet) sample = static_cast<std::int16_t>(sample / 20);
  const std::string alone = textOf(phrase);
  for (int round = 0; round < 5; ++round) {
    textOf(quiet);
    EXPECT_EQ(textOf(phrase), alone);
  }
}

TEST(SphinxBackendTest, TheWordsDoNotDependOnHowTheSamplesArrive) {
  Voice voice;
  const Samples samples = Voice::samplesOf(voice.say("the train leaves at half past seven"));
  SphinxBackend backend(sphinxModelFolder());
  ASSERT_TRUE(backend.load().isUsable);
  const std::atomic<bool> isDropped{false};
  std::set<std::string> texts;
  for (const std::size_t piece : {std::size_t{37}, std::size_t{5000}, samples.size()}) {
    backend.begin(isDropped);
    for (std::size_t at = 0; at < samples.size(); at += piece) {
      backend.feed(std::span(samples).subspan(at, std::min(piece, samples.size() - at)));
    }
    texts.insert(backend.finish().text);
  }
  EXPECT_EQ(texts.size(), 1U) << testing::PrintToString(texts);
}

TEST_F(SphinxFixture, SilenceAndNothingGiveNoWords) {
  EXPECT_EQ(textOf({}), "");
  EXPECT_EQ(textOf(Samples(16'000)), "");
  EXPECT_EQ(textOf(Samples(100)), "");
  EXPECT_EQ(textOf(spoken("nice to meet you")), "nice to meet you");
}

TEST_F(SphinxFixture, ManyDictationsDoNotMakeTheProcessGrow) {
  const Samples phrase = spoken("the answer is yes");
  for (int round = 0; round < 10; ++round) textOf(phrase);
  const long before = residentKilobytes();
  for (int round = 0; round < 15; ++round) ASSERT_EQ(textOf(phrase), "the answer is yes");
  EXPECT_LT(residentKilobytes() - before, 3000);
}

TEST_F(SphinxFixture, LongSpeechIsDecodedInPartsThatEndAtPauses) {
  Samples many;
  std::string expected;
  for (int round = 0; round < 2; ++round) {
    for (const char* phrase : kPhrases) {
      const Samples part = spoken(phrase);
      many.insert(many.end(), part.begin(), part.end());
      many.insert(many.end(), kSampleRateHz, 0);
      expected += expected.empty() ? phrase : std::string(" ") + phrase;
    }
  }
  ASSERT_GT(many.size(), 2 * SphinxBackend::kPartSamples);
  const std::string text = textOf(many);
  // Words next to a pause may differ, but none is lost within a phrase.
  EXPECT_THAT(text, testing::HasSubstr("one two three four five"));
  EXPECT_THAT(text, testing::HasSubstr("we are ready to start"));
  EXPECT_NEAR(static_cast<double>(text.size()), static_cast<double>(expected.size()), 25) << text;
}

TEST_F(SphinxFixture, ADroppedUtteranceDoesNotAffectTheNext) {
  ASSERT_TRUE(loop.runUntil([this] { return loaded.has_value(); }));
  {
    const auto utterance = recogniser->begin();
    feed(*utterance, spoken("happy birthday to you"));
  }
  EXPECT_EQ(textOf(spoken("we need more time")), "we need more time");
}

TEST_F(SphinxFixture, TheDestructorReturnsAtOnceWhileDecoding) {
  ASSERT_TRUE(loop.runUntil([this] { return loaded.has_value(); }));
  Samples minute;
  while (minute.size() < 60U * kSampleRateHz) {
    const Samples part = spoken("this is the first time");
    minute.insert(minute.end(), part.begin(), part.end());
  }
  auto utterance = recogniser->begin();
  utterance->feed(minute);
  utterance->finish([](const Transcription& /*result*/) { FAIL(); });
  const auto before = std::chrono::steady_clock::now();
  utterance.reset();
  recogniser.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - before, ThreadedRecogniser::kStopTimeout + 300ms);
}

TEST(SphinxBackendTest, AMissingModelIsAnErrorLine) {
  SphinxBackend backend("/nowhere");
  const LoadReport report = backend.load();
  EXPECT_FALSE(report.isUsable);
  EXPECT_THAT(report.lines, testing::ElementsAre(testing::StartsWith("[quillback] ERROR ")));
}

}  // namespace
}  // namespace voxtrel::quillback
