#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "quillback/recognition/ThreadedRecogniser.h"
#include "quillback/recognition/process/RecogniserProcess.h"
#include "support/PostedLoop.h"
#include "support/SpeechTest.h"
#include "support/Voice.h"

namespace voxtrel::quillback {
namespace {

using test::kPhrases;
using test::Voice;
using Samples = std::vector<std::int16_t>;

/// The embedded recogniser in a process of the engine's own program.
struct ServedRecogniserTest : testing::Test {
  Voice voice;
  RecogniserProcess process{{QUILLBACK, "recognise", "embedded"}, nullptr};
  std::atomic<bool> isDropped{false};

  Samples spoken(const std::string& text) { return Voice::samplesOf(voice.say(text)); }

  static void killChild() {
    std::ifstream children("/proc/thread-self/children");
    pid_t child = 0;
    ASSERT_TRUE(children >> child);
    ::kill(child, SIGKILL);
    siginfo_t info{};
    ::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT);
  }
};

TEST_F(ServedRecogniserTest, ThePhrasesAreRecognisedWordForWord) {
  ASSERT_TRUE(process.load().isUsable);
  for (const char* phrase : kPhrases) {
    process.begin(isDropped);
    process.feed(spoken(phrase));
    EXPECT_EQ(process.finish().text, phrase);
  }
}

TEST_F(ServedRecogniserTest, AKilledProcessCostsNoWord) {
  ASSERT_TRUE(process.load().isUsable);
  const Samples samples = spoken(kPhrases[0]);
  const std::span<const std::int16_t> all(samples);
  process.begin(isDropped);
  process.feed(all.first(samples.size() / 2));
  killChild();
  process.feed(all.subspan(samples.size() / 2));
  const Transcription result = process.finish();
  EXPECT_EQ(result.text, kPhrases[0]);
  EXPECT_THAT(result.lines, testing::IsEmpty());
}

TEST_F(ServedRecogniserTest, ItRunsOnTheRecognisersThread) {
  test::PostedLoop loop;
  std::optional<std::string> text;
  ThreadedRecogniser recogniser(
      loop,
      std::make_unique<RecogniserProcess>(
          std::vector<std::string>{QUILLBACK, "recognise", "embedded"}, nullptr),
      [](const LoadReport& report) { EXPECT_TRUE(report.isUsable); });
  recogniser.begin()->feed(spoken(kPhrases[0]));  // dropped
  const auto utterance = recogniser.begin();
  utterance->feed(spoken(kPhrases[1]));
  utterance->finish([&text](const Transcription& result) { text = result.text; });
  EXPECT_TRUE(loop.runUntil([&text] { return text.has_value(); }));
  EXPECT_EQ(text, kPhrases[1]);
}

}  // namespace
}  // namespace voxtrel::quillback
