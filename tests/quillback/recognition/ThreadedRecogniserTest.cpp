#include <gtest/gtest.h>

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

/// What the engine's thread did, and gates at which it waits. A gate opens when its promise is kept.
struct Script {
  LoadReport report{true, {}};
  std::shared_future<void> mayLoad;
  std::shared_future<void> mayHear;
  std::promise<void> hears;  ///< kept at the first sample
  std::mutex mutex;
  Samples heard;  ///< of this utterance, under mutex
  std::size_t longestPiece = 0;
  int utterances = 0;
  std::promise<void> gone;  ///< kept when the engine is destroyed
};

class ScriptedEngine final : public SpeechEngine {
 public:
  explicit ScriptedEngine(std::shared_ptr<Script> script) : script_(std::move(script)) {}
  ScriptedEngine(const ScriptedEngine&) = delete;
  ScriptedEngine& operator=(const ScriptedEngine&) = delete;
  ~ScriptedEngine() override { script_->gone.set_value(); }

  LoadReport load() override {
    if (script_->mayLoad.valid()) script_->mayLoad.wait();
    return script_->report;
  }

  void begin(const std::atomic<bool>& /*isDropped*/) override {
    const std::lock_guard lock(script_->mutex);
    script_->heard.clear();
    ++script_->utterances;
  }

  void hear(std::span<const std::int16_t> samples) override {
    if (!std::exchange(hasHeard_, true)) script_->hears.set_value();
    if (script_->mayHear.valid()) script_->mayHear.wait();
    const std::lock_guard lock(script_->mutex);
    script_->heard.insert(script_->heard.end(), samples.begin(), samples.end());
    script_->longestPiece = std::max(script_->longestPiece, samples.size());
  }

  Transcription finish() override {
    const std::lock_guard lock(script_->mutex);
    return {std::to_string(script_->heard.size()), {}, 1ms};
  }

 private:
  const std::shared_ptr<Script> script_;
  bool hasHeard_ = false;
};

struct ThreadedRecogniserTest : testing::Test {
  test::PostedLoop loop;
  std::shared_ptr<Script> script = std::make_shared<Script>();
  std::optional<LoadReport> loaded;
  std::unique_ptr<ThreadedRecogniser> recogniser;

  void start() {
    recogniser =
        std::make_unique<ThreadedRecogniser>(loop, std::make_unique<ScriptedEngine>(script),
                                             [this](const LoadReport& report) { loaded = report; });
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

TEST_F(ThreadedRecogniserTest, TheReportOfLoadingArrivesOnTheLoop) {
  script->report = {true, {"a line"}};
  start();
  ASSERT_TRUE(loop.runUntil([this] { return loaded.has_value(); }));
  EXPECT_TRUE(loaded->isUsable);
  EXPECT_EQ(loaded->lines, std::vector<std::string>{"a line"});
}

TEST_F(ThreadedRecogniserTest, AllSamplesAreHeardInOrderInBoundedPieces) {
  start();
  Samples many(50'000);
  std::iota(many.begin(), many.end(), std::int16_t{-20'000});
  EXPECT_EQ(textOf({Samples{1, 2, 3}, many, Samples{}, Samples{4}}), "50004");
  EXPECT_LE(script->longestPiece, EngineThread::kStepSamples);
  Samples expected{1, 2, 3};
  expected.insert(expected.end(), many.begin(), many.end());
  expected.push_back(4);
  EXPECT_EQ(script->heard, expected);
}

TEST_F(ThreadedRecogniserTest, WhatIsFedWhileTheModelLoadsIsNotLost) {
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

TEST_F(ThreadedRecogniserTest, HearingBeginsBeforeTheUtteranceIsFinished) {
  start();
  const auto utterance = recogniser->begin();
  utterance->feed(Samples(10));
  EXPECT_EQ(script->hears.get_future().wait_for(60s), std::future_status::ready);
}

TEST_F(ThreadedRecogniserTest, FeedingDoesNotWaitForTheEngine) {
  std::promise<void> mayHear;
  script->mayHear = mayHear.get_future();
  start();
  const auto utterance = recogniser->begin();
  utterance->feed(Samples(10));
  script->hears.get_future().wait();
  utterance->feed(Samples(20));  // would never return
  std::optional<std::string> text;
  utterance->finish([&text](const Transcription& result) { text = result.text; });
  mayHear.set_value();
  ASSERT_TRUE(loop.runUntil([&text] { return text.has_value(); }));
  EXPECT_EQ(*text, "30");
}

TEST_F(ThreadedRecogniserTest, EachUtteranceStartsAfresh) {
  start();
  EXPECT_EQ(textOf({Samples(500)}), "500");
  EXPECT_EQ(textOf({Samples(7)}), "7");
  EXPECT_EQ(textOf({}), "0");
  EXPECT_EQ(script->utterances, 3);
}

TEST_F(ThreadedRecogniserTest, ADroppedUtteranceIsNeverDone) {
  std::promise<void> mayHear;
  script->mayHear = mayHear.get_future();
  start();
  bool isDone = false;
  auto utterance = recogniser->begin();
  utterance->feed(Samples(100'000));
  script->hears.get_future().wait();
  utterance->finish([&isDone](const Transcription& /*result*/) { isDone = true; });
  utterance.reset();
  mayHear.set_value();
  EXPECT_EQ(textOf({Samples(7)}), "7");
  EXPECT_FALSE(isDone);
}

TEST_F(ThreadedRecogniserTest, AResultThatWaitsOnTheLoopIsDroppedWithItsUtterance) {
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

TEST_F(ThreadedRecogniserTest, AnUtteranceMayGoWhileItIsToldItsResult) {
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

TEST_F(ThreadedRecogniserTest, TheEndDoesNotWaitForAnEngineInALongStep) {
  std::promise<void> mayHear;
  script->mayHear = mayHear.get_future();
  start();
  ASSERT_TRUE(loop.runUntil([this] { return loaded.has_value(); }));
  auto utterance = recogniser->begin();
  utterance->feed(Samples(10));
  script->hears.get_future().wait();
  utterance->finish([](const Transcription& /*result*/) { FAIL(); });

  const auto before = std::chrono::steady_clock::now();
  utterance.reset();
  recogniser.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - before, EngineThread::kPatience + 300ms);

  mayHear.set_value();
  EXPECT_EQ(script->gone.get_future().wait_for(60s), std::future_status::ready);
  EXPECT_EQ(loop.waitingTasks(), 0U);
}

TEST_F(ThreadedRecogniserTest, TheEndDoesNotWaitForAModelThatLoads) {
  std::promise<void> mayLoad;
  script->mayLoad = mayLoad.get_future();
  start();
  recogniser.reset();
  mayLoad.set_value();
  EXPECT_EQ(script->gone.get_future().wait_for(60s), std::future_status::ready);
  EXPECT_EQ(loop.waitingTasks(), 0U);
  EXPECT_FALSE(loaded.has_value());
}

TEST_F(ThreadedRecogniserTest, AReportThatWaitsOnTheLoopIsDroppedWithTheRecogniser) {
  start();
  while (loop.waitingTasks() == 0) std::this_thread::yield();
  recogniser.reset();
  EXPECT_TRUE(loop.runUntil([this] { return loop.waitingTasks() == 0; }));
  EXPECT_FALSE(loaded.has_value());
}

TEST_F(ThreadedRecogniserTest, TheEndDropsWhatIsStillToBeHeard) {
  std::promise<void> mayHear;
  script->mayHear = mayHear.get_future();
  start();
  auto utterance = recogniser->begin();
  utterance->feed(Samples(1'000'000));
  script->hears.get_future().wait();
  recogniser.reset();  // which need not be after its utterance
  utterance.reset();
  mayHear.set_value();
  EXPECT_EQ(script->gone.get_future().wait_for(60s), std::future_status::ready);
  EXPECT_LE(script->heard.size(), EngineThread::kStepSamples);
}

}  // namespace
}  // namespace voxtrel::quillback
