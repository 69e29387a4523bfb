#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

#include "quillback/ports/Microphone.h"
#include "support/RecogniserProcessFixture.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;

struct RecogniserFailuresTest : RecogniserProcessFixture {
  static std::string line(const std::string& problem) {
    return "[quillback] ERROR The recogniser " + problem +
           ". From now on the embedded English recogniser is used.";
  }
};

struct Failure {
  const char* script;
  const char* problem;
};

const std::vector<Failure> kFailures{
    {"begin=abort", "ended unexpectedly (signal 6, aborted)"},
    {"feed=abort", "ended unexpectedly (signal 6, aborted)"},
    {"feed=ill", "ended unexpectedly (signal 4, illegal instruction)"},
    {"finish=ill", "ended unexpectedly (signal 4, illegal instruction)"},
    {"finish=abort", "ended unexpectedly (signal 6, aborted)"},
    {"finish=exit", "ended unexpectedly (exit status 3)"},
    {"finish=garbage", "sent a broken message"},
    {"finish=huge", "sent a broken message"},
    {"finish=early", "sent a message that was not expected"},
    {"feed=early", "sent a message that was not expected"}};

TEST_F(RecogniserFailuresTest, AnotherChildGetsTheWholeUtterance) {
  for (const Failure& failure : kFailures) {
    std::filesystem::remove(folder_.path() / "once");
    start({failure.script, once()});
    process_->begin(isDropped_);
    for (int piece = 0; piece < 100; ++piece) process_->feed(Samples(1000, 1));
    const Transcription result = process_->finish();
    EXPECT_EQ(result.text, "100000 samples, sum 100000") << failure.script;
    EXPECT_THAT(result.lines, ElementsAre("a line of the result"));
  }
}

TEST_F(RecogniserFailuresTest, AfterAnIllegalInstructionTheNextKindOfProcessorIsTried) {
  for (const char* script : {"load=ill", "begin=ill", "feed=ill", "finish=ill"}) {
    const LoadReport report = start({script, "below=3"}, {}, 4);
    EXPECT_THAT(report.lines, ElementsAre("a line of the model")) << script;
    EXPECT_EQ(textOf(Samples(5000, 1)), "5000 samples, sum 5000") << script;
  }
}

TEST_F(RecogniserFailuresTest, WithoutAKindOfProcessorThatWorksTheFallbackIsUsed) {
  const LoadReport report = start({"load=ill"}, {}, 4);
  EXPECT_THAT(report.lines, ElementsAre(line("ended unexpectedly (signal 4, illegal instruction)"),
                                        "the fallback's line"));
  EXPECT_EQ(textOf(Samples(5000, 1)), "fallback 5000");
}

TEST_F(RecogniserFailuresTest, AfterASecondEndTheFallbackGetsTheWholeUtterance) {
  for (const Failure& failure : kFailures) {
    start({failure.script});
    process_->begin(isDropped_);
    for (int piece = 0; piece < 100; ++piece) process_->feed(Samples(1000, 1));
    const Transcription result = process_->finish();
    EXPECT_EQ(result.text, "fallback 100000") << failure.script;
    EXPECT_THAT(result.lines, ElementsAre(line(failure.problem), "the fallback's line"));
    const Transcription later = recognise({1, 2, 3});
    EXPECT_EQ(later.text, "fallback 3");
    EXPECT_THAT(later.lines, IsEmpty());
  }
}

TEST_F(RecogniserFailuresTest, EveryUtteranceHasASecondTry) {
  for (int round = 0; round < 3; ++round) {
    std::filesystem::remove(folder_.path() / "once");
    if (!process_) start({"finish=abort", once()});
    process_->rest();
    EXPECT_EQ(textOf({1, 2}), "2 samples, sum 3");
  }
}

TEST_F(RecogniserFailuresTest, AChildThatEndedWhileIdleLeavesTheUtteranceItsSecondTry) {
  start({"finish=abort", once(), pid()});
  const FileDescriptor child = openProcess(readPid());
  ::kill(readPid(), SIGKILL);
  ASSERT_TRUE(hasEnded(child));
  std::filesystem::remove(folder_.path() / "once");  // the next child fails too
  EXPECT_EQ(textOf({1, 2}), "2 samples, sum 3");
}

TEST_F(RecogniserFailuresTest, AChildThatCannotLoadIsReplacedByTheFallbackAtOnce) {
  const std::vector<Failure> failures{
      {"load=abort", "ended unexpectedly (signal 6, aborted)"},
      {"load=ill", "ended unexpectedly (signal 4, illegal instruction)"},
      {"load=exit", "ended unexpectedly (exit status 3)"},
      {"load=garbage", "sent a broken message"},
      {"load=early", "sent a message that was not expected"}};
  for (const Failure& failure : failures) {
    const LoadReport report = start({failure.script});
    EXPECT_TRUE(report.isUsable);
    EXPECT_THAT(report.lines, ElementsAre(line(failure.problem), "the fallback's line"));
    EXPECT_EQ(textOf({1, 2}), "fallback 2");
  }
}

TEST_F(RecogniserFailuresTest, AnUnusableModelIsReportedWithTheChildsReason) {
  EXPECT_THAT(
      start({"load=unusable"}).lines,
      ElementsAre(line("cannot load its model: a line of the model"), "the fallback's line"));
  EXPECT_EQ(textOf({1, 2}), "fallback 2");
}

TEST_F(RecogniserFailuresTest, AModelThatCannotBeLoadedAgainCostsNoWord) {
  // As after a rest: no load before the first utterance.
  process_ = std::make_unique<RecogniserProcess>(
      std::vector<std::string>{SCRIPTED_RECOGNISER, "load=unusable"},
      [] { return std::make_unique<CountingBackend>(); });
  const Transcription result = recognise({1, 2});
  EXPECT_EQ(result.text, "fallback 2");
  EXPECT_THAT(result.lines, ElementsAre(line("cannot load its model: a line of the model"),
                                        "the fallback's line"));
}

TEST_F(RecogniserFailuresTest, AProgramThatIsNotThereIsReported) {
  const LoadReport report = startCommand({"/nowhere/program"});
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre(line("cannot be started (No such file or directory)"),
                                        "the fallback's line"));
}

TEST_F(RecogniserFailuresTest, ADecoderThatNeverEndsIsEndedAfterTheLimit) {
  RecogniserLimits limits;
  limits.answer = 50ms;
  limits.answerPerSound = 5;
  start({"finish=hang"}, limits);
  const auto before = steady_clock::now();
  const Transcription result = recognise(Samples(kSampleRateHz / 10));
  EXPECT_GE(steady_clock::now() - before, 500ms);  // five times the sound
  EXPECT_EQ(result.text, "fallback 1600");
  EXPECT_THAT(result.lines, ElementsAre(line("gave no answer in time"), "the fallback's line"));
}

TEST_F(RecogniserFailuresTest, AModelThatNeverLoadsIsGivenUp) {
  RecogniserLimits limits;
  limits.load = 50ms;
  EXPECT_THAT(start({"load=hang"}, limits).lines,
              ElementsAre(line("did not load its model in time"), "the fallback's line"));
}

TEST_F(RecogniserFailuresTest, WithoutAFallbackTheReportIsNotUsable) {
  process_ = std::make_unique<RecogniserProcess>(
      std::vector<std::string>{SCRIPTED_RECOGNISER, "load=ill"}, nullptr);
  const LoadReport report = process_->load();
  EXPECT_FALSE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre("[quillback] ERROR The recogniser ended unexpectedly "
                                        "(signal 4, illegal instruction)."));
}

TEST_F(RecogniserFailuresTest, WithoutAFallbackALaterFailureGivesNoText) {
  process_ = std::make_unique<RecogniserProcess>(
      std::vector<std::string>{SCRIPTED_RECOGNISER, "feed=exit"}, nullptr);
  EXPECT_TRUE(process_->load().isUsable);
  const Transcription result = recognise({1, 2});
  EXPECT_EQ(result.text, "");
  EXPECT_EQ(result.lines.size(), 1U);
  EXPECT_EQ(textOf({1}), "");
}

TEST_F(RecogniserFailuresTest, TheLineIsKeptUntilAnUtteranceIsNotDropped) {
  start({"feed=abort"});
  process_->begin(isDropped_);
  // Until the fallback has taken over.
  for (const auto end = steady_clock::now() + 60s; steady_clock::now() < end;) {
    process_->feed(Samples(1000));
    if (openDescriptors() == descriptorsBefore_) break;
  }
  isDropped_ = true;
  EXPECT_THAT(process_->finish().lines, IsEmpty());
  process_->drop();
  isDropped_ = false;
  const Transcription result = recognise({1, 2});
  EXPECT_EQ(result.text, "fallback 2");
  EXPECT_THAT(result.lines,
              ElementsAre(line("ended unexpectedly (signal 6, aborted)"), "the fallback's line"));
}

}  // namespace
}  // namespace voxtrel::quillback
