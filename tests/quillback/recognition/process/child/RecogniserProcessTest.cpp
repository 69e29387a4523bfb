#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <future>

#include "common/posix/SpawnedProgram.h"
#include "support/RecogniserProcessFixture.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using testing::ElementsAre;

struct RecogniserProcessTest : RecogniserProcessFixture {
  /// A busy machine may be slow to answer, but no child may be replaced for it.
  static RecogniserLimits patient() {
    RecogniserLimits limits;
    limits.drop = 10s;
    return limits;
  }
};

TEST_F(RecogniserProcessTest, TheReportAndTheResultAreTheChilds) {
  const LoadReport report = start({});
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre("a line of the model"));
  const Transcription result = recognise({1, 2, -10});
  EXPECT_EQ(result.text, "3 samples, sum -7");
  EXPECT_EQ(result.decode, 7us);
  EXPECT_THAT(result.lines, ElementsAre("a line of the result"));
}

TEST_F(RecogniserProcessTest, OneChildTakesOneUtteranceAfterTheOther) {
  start({pid()});
  std::filesystem::remove(pidFile());
  EXPECT_EQ(textOf({5}), "1 samples, sum 5");
  EXPECT_EQ(textOf({}), "0 samples, sum 0");
  EXPECT_EQ(textOf(Samples(1'000'000, 1)), "1000000 samples, sum 1000000");
  EXPECT_FALSE(std::filesystem::exists(pidFile()));
}

TEST_F(RecogniserProcessTest, TheChildHasNoStreamAndNoOtherDescriptorOfOurs) {
  const FileDescriptor inheritable(::open("/dev/zero", O_RDONLY));
  start({pid()});
  const std::filesystem::path descriptors = "/proc/" + std::to_string(readPid()) + "/fd";
  for (const auto& entry : std::filesystem::directory_iterator(descriptors)) {
    EXPECT_NE(std::filesystem::read_symlink(entry), "/dev/zero");
  }
  for (const char* stream : {"0", "1", "2"}) {
    EXPECT_EQ(std::filesystem::read_symlink(descriptors / stream), "/dev/null");
  }
}

TEST_F(RecogniserProcessTest, FeedingDoesNotWaitForAChildThatComputes) {
  start({"feed=" + gate()});
  process_->begin(isDropped_);
  for (int piece = 0; piece < 1000; ++piece) process_->feed(Samples(1000, 1));
  openGate();
  EXPECT_EQ(process_->finish().text, "1000000 samples, sum 1000000");
}

TEST_F(RecogniserProcessTest, AChildThatEndsWhileIdleIsReplacedWithoutAWord) {
  start({pid()});
  const FileDescriptor child = openProcess(readPid());
  ::kill(readPid(), SIGKILL);
  ASSERT_TRUE(hasEnded(child));
  const Transcription result = recognise({1, 2});
  EXPECT_EQ(result.text, "2 samples, sum 3");
  EXPECT_THAT(result.lines, ElementsAre("a line of the result"));
}

TEST_F(RecogniserProcessTest, RestEndsTheChildAndTheNextUtteranceStartsAnother) {
  start({pid()});
  const FileDescriptor child = openProcess(readPid());
  process_->rest();
  EXPECT_TRUE(hasEnded(child, 0));
  EXPECT_EQ(textOf({1, 2}), "2 samples, sum 3");
}

TEST_F(RecogniserProcessTest, ADroppedUtteranceIsLeftWhileTheChildComputes) {
  start({"finish=" + gate() + ",until-dropped", "first=yes", pid()}, patient());
  std::filesystem::remove(pidFile());
  process_->begin(isDropped_);
  process_->feed(Samples(1000, 1));
  auto result = std::async(std::launch::async, [this] { return process_->finish(); });
  openGate();
  const auto before = steady_clock::now();
  isDropped_ = true;
  EXPECT_EQ(result.get().text, "");
  process_->drop();
  EXPECT_LT(steady_clock::now() - before, 5s);
  EXPECT_FALSE(std::filesystem::exists(pidFile()));
  isDropped_ = false;
  EXPECT_EQ(textOf({1, 2}),
            "2 samples, sum 3");  // the late result of the other is not taken for it
}

TEST_F(RecogniserProcessTest, SamplesThatADroppedUtteranceLeftBehindAreNotRecognised) {
  start({"feed=until-dropped", pid()}, patient());
  std::filesystem::remove(pidFile());
  process_->begin(isDropped_);
  for (int piece = 0; piece < 1000; ++piece) process_->feed(Samples(1000, 1));
  isDropped_ = true;
  process_->drop();
  EXPECT_FALSE(std::filesystem::exists(pidFile()));
  isDropped_ = false;
  EXPECT_EQ(textOf({}), "0 samples, sum 0");
}

TEST_F(RecogniserProcessTest, ADropLeavesNoTraceInTheNextUtterance) {
  start({}, patient());
  for (int round = 0; round < 50; ++round) {
    isDropped_ = false;
    process_->begin(isDropped_);
    process_->feed(Samples(10'000, 1));
    isDropped_ = true;
    process_->drop();
    isDropped_ = false;
    ASSERT_EQ(textOf({1, 2}), "2 samples, sum 3");
  }
}

TEST_F(RecogniserProcessTest, AChildThatDoesNotLeaveADroppedUtteranceIsReplaced) {
  start({"begin=hang", once()});
  process_->begin(isDropped_);
  process_->feed(Samples(1000, 1));
  isDropped_ = true;
  const auto before = steady_clock::now();
  process_->drop();
  EXPECT_GE(steady_clock::now() - before, 200ms);
  EXPECT_LT(steady_clock::now() - before, 2s);
  isDropped_ = false;
  const Transcription result = recognise({1, 2});
  EXPECT_EQ(result.text, "2 samples, sum 3");
  EXPECT_THAT(result.lines, ElementsAre("a line of the result"));
}

TEST_F(RecogniserProcessTest, ADropDoesNotReplaceAChildThatStillLoads) {
  process_ = std::make_unique<RecogniserProcess>(
      std::vector<std::string>{SCRIPTED_RECOGNISER, "load=" + gate(), pid()}, nullptr);
  ASSERT_EQ(::mkfifo(pidFile().c_str(), 0600), 0);
  process_->begin(isDropped_);
  EXPECT_GT(readPid(), 0);  // waits for the child to write it
  std::filesystem::remove(pidFile());
  process_->feed(Samples{7});
  isDropped_ = true;
  process_->drop();
  isDropped_ = false;
  process_->begin(isDropped_);
  process_->feed(Samples{1, 2});
  openGate();
  EXPECT_EQ(process_->finish().text, "2 samples, sum 3");
  EXPECT_FALSE(std::filesystem::exists(pidFile()));
}

TEST_F(RecogniserProcessTest, TheChildEndsWithAKilledEngine) {
  ASSERT_EQ(::mkfifo(pidFile().c_str(), 0600), 0);
  for (const char* script : {"load=hang", "finish=hang", ""}) {
    const FileDescriptor null(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    std::vector<std::string> words{SCRIPTED_RECOGNISER, "own", pid()};
    if (*script != '\0') words.emplace_back(script);
    const auto engine = spawnProgram(words, null.get());
    ASSERT_TRUE(engine);
    const FileDescriptor child = openProcess(readPid());  // waits for the child to write it
    ::kill(*engine, SIGKILL);
    ::waitpid(*engine, nullptr, 0);
    EXPECT_TRUE(hasEnded(child)) << script;
  }
}

TEST_F(RecogniserProcessTest, DestroyingItEndsAChildThatComputes) {
  start({"feed=hang", pid()});
  const FileDescriptor child = openProcess(readPid());
  process_->begin(isDropped_);
  process_->feed(Samples(1000, 1));
  process_.reset();
  EXPECT_TRUE(hasEnded(child, 0));
}

}  // namespace
}  // namespace voxtrel::quillback
