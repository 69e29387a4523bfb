#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <future>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "quillback/recognition/ThreadedRecogniser.h"
#include "support/PostedLoop.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;
using Samples = std::vector<std::int16_t>;

/// What the backend's thread did, and futures at which it waits.
struct Script {
  LoadReport report{true, {}};
  std::shared_future<void> mayLoad;
  std::shared_future<void> mayFeed;
  std::promise<void> isFed;  ///< set at the first sample
  std::mutex mutex;
  Samples heard;  ///< in this utterance, under mutex
  std::size_t longestPiece = 0;
  int utterances = 0;
  int finished = 0;
  int dropped = 0;
  std::size_t rests = 0;
  std::promise<void> isFinishing;  ///< set at the first call of finish
  std::shared_future<void> mayFinish;
  std::array<std::promise<void>, 2> hasRested;
  std::promise<void> gone;  ///< set when the backend is destroyed
};

class ScriptedBackend final : public RecogniserBackend {
 public:
  explicit ScriptedBackend(std::shared_ptr<Script> script) : script_(std::move(script)) {}
  ScriptedBackend(const ScriptedBackend&) = delete;
  ScriptedBackend& operator=(const ScriptedBackend&) = delete;
  ~ScriptedBackend() override { script_->gone.set_value(); }

  LoadReport load() override {
    if (script_->mayLoad.valid()) script_->mayLoad.wait();
    return script_->report;
  }

  void begin(const std::atomic<bool>& /*isDropped*/) override {
    const std::lock_guard lock(script_->mutex);
    script_->heard.clear();
    ++script_->utterances;
  }

  void feed(std::span<const std::int16_t> samples) override {
    if (!std::exchange(wasFed_, true)) script_->isFed.set_value();
    if (script_->mayFeed.valid()) script_->mayFeed.wait();
    const std::lock_guard lock(script_->mutex);
    script_->heard.insert(script_->heard.end(), samples.begin(), samples.end());
    script_->longestPiece = std::max(script_->longestPiece, samples.size());
  }

  Transcription finish() override {
    if (!std::exchange(wasFinishing_, true)) script_->isFinishing.set_value();
    if (script_->mayFinish.valid()) script_->mayFinish.wait();
    const std::lock_guard lock(script_->mutex);
    ++script_->finished;
    return {std::to_string(script_->heard.size()), {}, 1ms, {}};
  }

  void drop() override {
    const std::lock_guard lock(script_->mutex);
    ++script_->dropped;
  }

  void rest() override {
    const std::lock_guard lock(script_->mutex);
    script_->hasRested.at(script_->rests++).set_value();
  }

 private:
  const std::shared_ptr<Script> script_;
  bool wasFed_ = false;
  bool wasFinishing_ = false;
};

struct ThreadedRecogniserTest : testing::Test {
  test::PostedLoop loop;
  std::shared_ptr<Script> script = std::make_shared<Script>();
  std::optional<LoadReport> loaded;
  std::unique_ptr<ThreadedRecogniser> recogniser;

  void start(std::optional<std::chrono::seconds> restAfter = {}) {
    recogniser = std::make_unique<ThreadedRecogniser>(
        loop, std::make_unique<ScriptedBackend>(script),
        [this](const LoadReport& report) { loaded = report; }, restAfter);
  }

  std::string textOf(const std::vector<Samples>& pieces) {
    const auto utterance = recogniser->begin();
    for (const Samples& piece : pieces) utterance->feed(piece);
    std::optional<std::string> text;
    utterance->finish([&text](const Transcription& result) { text = result.text; });
    EXPECT_TRUE(loop.runUntil([&text] { return text.has_value(); }));
    return text.value_or("nothing");
  }
};

TEST_F(ThreadedRecogniserTest, TheLoadReportArrivesOnTheLoop) {
  script->report = {true, {"a line"}};
  start();
  ASSERT_TRUE(loop.runUntil([this] { return loaded.has_value(); }));
  EXPECT_TRUE(loaded->isUsable);
  EXPECT_EQ(loaded->lines, std::vector<std::string>{"a line"});
}

TEST_F(ThreadedRecogniserTest, AllSamplesAreFedInOrderInBoundedPieces) {
  start();
  Samples many(50'000);
  std::iota(many.begin(), many.end(), std::int16_t{-20'000});
  EXPECT_EQ(textOf({Samples{1, 2, 3}, many, Samples{}, Samples{4}}), "50004");
  EXPECT_LE(script->longestPiece, ThreadedRecogniser::kMaxStepSamples);
  Samples expected{1, 2, 3};
  expected.insert(expected.end(), many.begin(), many.end());
  expected.push_back(4);
  EXPECT_EQ(script->heard, expected);
}

TEST_F(ThreadedRecogniserTest, SamplesFedWhileTheModelLoadsAreNotLost) {
  std::promise<void> mayLoad;
  script->mayLoad = mayLoad.get_future();
  start();
  const auto utterance = recogniser->begin();
  utterance->feed(Samples(100));
  std::optional<std::string> text;
  utterance->finish([&text](const Transcription& result) { text = result.text; });
  mayLoad.set_value();
  ASSERT_TRUE(loop.runUntil([&text] { return text.has_value(); }));
  EXPECT_EQ(*text, "100");
}

TEST_F(ThreadedRecogniserTest, RecognitionStartsBeforeTheUtteranceIsFinished) {
  start();
  const auto utterance = recogniser->begin();
  utterance->feed(Samples(10));
  EXPECT_EQ(script->isFed.get_future().wait_for(60s), std::future_status::ready);
}

TEST_F(ThreadedRecogniserTest, FeedingDoesNotWaitForTheBackend) {
  std::promise<void> mayFeed;
  script->mayFeed = mayFeed.get_future();
  start();
  const auto utterance = recogniser->begin();
  utterance->feed(Samples(10));
  script->isFed.get_future().wait();
  utterance->feed(Samples(20));  // would block forever if it waited
  std::optional<std::string> text;
  utterance->finish([&text](const Transcription& result) { text = result.text; });
  mayFeed.set_value();
  ASSERT_TRUE(loop.runUntil([&text] { return text.has_value(); }));
  EXPECT_EQ(*text, "30");
}

TEST_F(ThreadedRecogniserTest, EachUtteranceStartsWithoutTheSamplesOfTheLast) {
  start();
  EXPECT_EQ(textOf({Samples(500)}), "500");
  EXPECT_EQ(textOf({Samples(7)}), "7");
  EXPECT_EQ(textOf({}), "0");
  EXPECT_EQ(script->utterances, 3);
}

TEST_F(ThreadedRecogniserTest, ADroppedUtteranceIsNeverDone) {
  std::promise<void> mayFeed;
  script->mayFeed = mayFeed.get_future();
  start();
  bool isDone = false;
  auto utterance = recogniser->begin();
  utterance->feed(Samples(100'000));
  script->isFed.get_future().wait();
  utterance->finish([&isDone](const Transcription& /*result*/) { isDone = true; });
  utterance.reset();
  mayFeed.set_value();
  EXPECT_EQ(textOf({Samples(7)}), "7");
  EXPECT_FALSE(isDone);
}

TEST_F(ThreadedRecogniserTest, ADroppedUtteranceIsDroppedInTheBackendInsteadOfFinished) {
  std::promise<void> mayFeed;
  script->mayFeed = mayFeed.get_future();
  start();
  auto utterance = recogniser->begin();
  utterance->feed(Samples(10));
  script->isFed.get_future().wait();
  utterance.reset();
  mayFeed.set_value();
  EXPECT_EQ(textOf({Samples(7)}), "7");
  EXPECT_EQ(script->dropped, 1);
  EXPECT_EQ(script->finished, 1);
}

TEST_F(ThreadedRecogniserTest, AnUtteranceDroppedWhileItIsFinishedIsDroppedInTheBackendToo) {
  std::promise<void> mayFinish;
  script->mayFinish = mayFinish.get_future();
  start();
  auto utterance = recogniser->begin();
  utterance->finish([](const Transcription& /*result*/) { FAIL(); });
  script->isFinishing.get_future().wait();
  utterance.reset();
  mayFinish.set_value();
  EXPECT_EQ(textOf({Samples(7)}), "7");
  EXPECT_EQ(script->dropped, 1);
}

TEST_F(ThreadedRecogniserTest, AnUtteranceDroppedInTheQueueNeverReachesTheBackend) {
  std::promise<void> mayLoad;
  script->mayLoad = mayLoad.get_future();
  start();
  for (int round = 0; round < 3; ++round) recogniser->begin()->feed(Samples(10));
  mayLoad.set_value();
  EXPECT_EQ(textOf({Samples(7)}), "7");
  EXPECT_EQ(script->utterances, 1);
}

TEST_F(ThreadedRecogniserTest, TheBackendRestsOnceAfterTheIdleTime) {
  start(0s);
  script->hasRested[0].get_future().wait();
  EXPECT_EQ(textOf({Samples(7)}), "7");
  script->hasRested[1].get_future().wait();
  recogniser.reset();
  EXPECT_EQ(script->rests, 2U);
}

TEST_F(ThreadedRecogniserTest, WithoutAnIdleTimeTheBackendNeverRests) {
  start();
  EXPECT_EQ(textOf({Samples(7)}), "7");
  recogniser.reset();
  EXPECT_EQ(script->rests, 0U);
}

TEST_F(ThreadedRecogniserTest, AResultQueuedOnTheLoopIsDroppedWithItsUtterance) {
  start();
  ASSERT_TRUE(loop.runUntil([this] { return loaded.has_value(); }));
  bool isDone = false;
  auto utterance = recogniser->begin();
  utterance->finish([&isDone](const Transcription& /*result*/) { isDone = true; });
  while (loop.waitingTasks() == 0) std::this_thread::yield();
  utterance.reset();
  EXPECT_EQ(textOf({Samples(7)}), "7");
  EXPECT_FALSE(isDone);
}

TEST_F(ThreadedRecogniserTest, AnUtteranceMayBeDestroyedByItsOwnCallback) {
  start();
  auto utterance = recogniser->begin();
  std::optional<std::string> text;
  utterance->finish([&](const Transcription& result) {
    utterance.reset();
    text = result.text;
  });
  ASSERT_TRUE(loop.runUntil([&text] { return text.has_value(); }));
  EXPECT_EQ(*text, "0");
}

TEST_F(ThreadedRecogniserTest, TheDestructorDoesNotWaitForABackendInALongStep) {
  std::promise<void> mayFeed;
  script->mayFeed = mayFeed.get_future();
  start();
  ASSERT_TRUE(loop.runUntil([this] { return loaded.has_value(); }));
  auto utterance = recogniser->begin();
  utterance->feed(Samples(10));
  script->isFed.get_future().wait();
  utterance->finish([](const Transcription& /*result*/) { FAIL(); });

  const auto before = std::chrono::steady_clock::now();
  utterance.reset();
  recogniser.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - before, ThreadedRecogniser::kStopTimeout + 300ms);

  mayFeed.set_value();
  EXPECT_EQ(script->gone.get_future().wait_for(60s), std::future_status::ready);
  EXPECT_EQ(loop.waitingTasks(), 0U);
}

TEST_F(ThreadedRecogniserTest, TheDestructorDoesNotWaitForAModelThatIsLoading) {
  std::promise<void> mayLoad;
  script->mayLoad = mayLoad.get_future();
  start();
  recogniser.reset();
  mayLoad.set_value();
  EXPECT_EQ(script->gone.get_future().wait_for(60s), std::future_status::ready);
  EXPECT_EQ(loop.waitingTasks(), 0U);
  EXPECT_FALSE(loaded.has_value());
}

TEST_F(ThreadedRecogniserTest, AReportQueuedOnTheLoopIsDroppedWithTheRecogniser) {
  start();
  while (loop.waitingTasks() == 0) std::this_thread::yield();
  recogniser.reset();
  EXPECT_TRUE(loop.runUntil([this] { return loop.waitingTasks() == 0; }));
  EXPECT_FALSE(loaded.has_value());
}

TEST_F(ThreadedRecogniserTest, TheDestructorDropsSamplesThatAreStillQueued) {
  std::promise<void> mayFeed;
  script->mayFeed = mayFeed.get_future();
  start();
  auto utterance = recogniser->begin();
  utterance->feed(Samples(1'000'000));
  script->isFed.get_future().wait();
  recogniser.reset();  // may be destroyed before its utterance
  utterance.reset();
  mayFeed.set_value();
  EXPECT_EQ(script->gone.get_future().wait_for(60s), std::future_status::ready);
  EXPECT_LE(script->heard.size(), ThreadedRecogniser::kMaxStepSamples);
}

}  // namespace
}  // namespace voxtrel::quillback
