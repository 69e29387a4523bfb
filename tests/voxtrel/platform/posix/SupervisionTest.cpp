#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <fstream>
#include <limits>
#include <thread>

#include "support/Sanitizers.h"
#include "voxtrel/platform/posix/Supervision.h"
#include "voxtrel/platform/posix/Waiting.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

// A sanitizer keeps freed memory, so measuring memory is pointless there.
#if defined(VOXTREL_ADDRESS_SANITIZER) || defined(VOXTREL_THREAD_SANITIZER)
constexpr long kMaxGrowthKilobytes = std::numeric_limits<long>::max();
#else
constexpr long kMaxGrowthKilobytes = 32L * 1024;
#endif

long residentKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
  }
  return 0;
}

TEST_F(Supervision, FollowsARealEngine) {
  script(
      "print Ready.\nprint Recording...\nprint Processing 2.3s audio\n"
      "print [gpu-decode] text: \"hello\"\nprint encode=12ms\n");
  std::vector<AppState> heard;
  manager_->setOnStateChange([&](AppState state) { heard.push_back(state); });
  manager_->launch();
  ASSERT_TRUE(mainLoop_.runUntil([&] { return heard.size() == 5; }));
  EXPECT_EQ(heard, (std::vector{AppState::loading, AppState::idle, AppState::recording,
                                AppState::processing, AppState::idle}));
  EXPECT_EQ(manager_->lastText(), "hello");
}

TEST_F(Supervision, ReadsTheEnginesLastWordsBeforeItJudgesTheExit) {
  for (const char* before : {"", "grandchild 60000\n", "flooding-grandchild 60000\n"}) {
    SCOPED_TRACE(before);
    script(std::string(before) + "print [quillback] Failed to load the model\nexit 1\n");
    const std::size_t known = notifications_.count();
    manager_->launch();
    ASSERT_TRUE(mainLoop_.runUntil([&] { return notifications_.count() > known; }));
    EXPECT_EQ(manager_->lastError(), "[quillback] Failed to load the model");
    manager_->stopAndWait(3s);
  }
}

TEST_F(Supervision, ShowsTheSignalThatEndedTheEngine) {
  script("signal SEGV\n");
  manager_->launch();
  ASSERT_TRUE(mainLoop_.runUntil([&] { return notifications_.count() > 0; }));
  EXPECT_EQ(manager_->lastError(), "Exited with code 11");
}

TEST_F(Supervision, LaunchesAtTheSameMomentLeaveOneEngineThatStopEnds) {
  for (int round = 0; round < 10; ++round) {
    std::atomic<int> ready = 0;
    const auto launch = [&] {
      ++ready;
      while (ready < 4) std::this_thread::yield();
      manager_->launch();
    };
    {
      std::array<std::jthread, 3> others{std::jthread(launch), std::jthread(launch),
                                         std::jthread(launch)};
      launch();
    }
    EXPECT_EQ(runningEngines().size(), 1U);
    manager_->stopAndWait(2s);
    EXPECT_TRUE(eventually([&] { return runningEngines().empty(); }));
  }
}

TEST_F(Supervision, EngineRelaunchedInTheBackgroundOutlivesTheThreadThatDidIt) {
  script("print Ready.\n");
  std::jthread([&] { manager_->launch(); }).join();
  ASSERT_TRUE(mainLoop_.runUntil([&] { return manager_->state() == AppState::idle; }));
  const auto engine = runningEngines();
  ASSERT_EQ(engine.size(), 1U);
  EXPECT_FALSE(mainLoop_.runUntil([&] { return runningEngines() != engine; }, 300ms));
}

TEST_F(Supervision, CrashedEngineComesBackAfterASecond) {
  script("exit 1\n");
  manager_->launch();
  ASSERT_TRUE(mainLoop_.runUntil([&] { return notifications_.count() == 1; }));
  const auto crashed = clock_.now();
  script("print Ready.\n");
  ASSERT_TRUE(mainLoop_.runUntil([&] { return manager_->state() == AppState::idle; }));
  EXPECT_GE(clock_.now() - crashed, 900ms);
  EXPECT_EQ(runningEngines().size(), 1U);
}

TEST_F(Supervision, FloodOfStatesStaysSmallInMemoryAndEndsInTheRightState) {
  script("flood 4M Ready.\nprint Recording...\n");
  std::size_t heard = 0;
  manager_->setOnStateChange([&](AppState /*state*/) { ++heard; });
  const long before = residentKilobytes();
  manager_->launch();
  long most = before;
  ASSERT_TRUE(mainLoop_.runUntil(
      [&] {
        if (heard % 1024 == 0) most = std::max(most, residentKilobytes());
        return manager_->state() == AppState::recording;
      },
      120s));
  EXPECT_GT(heard, 500'000U);
  EXPECT_LT(most - before, kMaxGrowthKilobytes);
  EXPECT_LT(mainLoop_.mostWaiting(), 300U);
}

TEST_F(Supervision, NoChangeOfTheStatusIsLostWhileItIsBeingRead) {
  script(
      "repeat 20000 [gpu-decode] text: \"again\"\n"
      "print [gpu-decode] text: \"last\"\n");
  std::string text;
  manager_->setOnStatusOutdated([&](Clock::TimePoint) { text = manager_->status().lastText; });
  manager_->launch();
  EXPECT_TRUE(mainLoop_.runUntil([&] { return text == "last"; }));
  EXPECT_LT(mainLoop_.mostWaiting(), 10U);
}

TEST_F(Supervision, FloodIsStoppedAsSoonAsAnyEngine) {
  script("flood 1G Ready.\n");
  manager_->launch();
  ASSERT_TRUE(mainLoop_.runUntil([&] { return manager_->state() == AppState::idle; }));
  // The main loop does not run while this thread waits in stopAndWait.
  const auto before = clock_.now();
  manager_->stopAndWait(3s);
  EXPECT_LT(clock_.now() - before, 2s);
  EXPECT_TRUE(runningEngines().empty());
}

}  // namespace
}  // namespace voxtrel
