#include <gtest/gtest.h>

#include <memory>

#include "support/macos/Observed.h"
#import "support/macos/RunLoop.h"
#import "voxtrel/platform/macos/application/RunLoopTimers.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

struct RunLoopFrameTimerTest : ::testing::Test {
  RunLoopFrameTimer frames;
};

TEST_F(RunLoopFrameTimerTest, framesComeAtTheirRateAndNoFaster) {
  constexpr int kFrames = 30;
  const std::chrono::duration<double> interval(1.0 / 60);
  int count = 0;
  const auto start = std::chrono::steady_clock::now();
  const auto timer = frames.everyFrame(interval, [&] { ++count; });
  // Late ones, on a busy machine, are not made up for.
  EXPECT_TRUE(runUntil([&] { return count >= kFrames; }, 5s));
  EXPECT_GE(std::chrono::steady_clock::now() - start, (kFrames - 1) * interval);
}

TEST_F(RunLoopFrameTimerTest, aLateFrameIsNotMadeUpFor) {
  int count = 0;
  const auto timer = frames.everyFrame(20ms, [&] { ++count; });
  ASSERT_TRUE(runUntil([&] { return count > 0; }));
  const int before = count;
  const auto busyUntil = std::chrono::steady_clock::now() + 200ms;
  while (std::chrono::steady_clock::now() < busyUntil) continue;
  runFor(15ms);
  EXPECT_LE(count - before, 2);
}

TEST_F(RunLoopFrameTimerTest, noFrameComesWithoutTheHandle) {
  int count = 0;
  auto timer = frames.everyFrame(5ms, [&] { ++count; });
  ASSERT_TRUE(runUntil([&] { return count > 0; }));
  timer.reset();
  const int before = count;
  runFor(50ms);
  EXPECT_EQ(count, before);
}

TEST_F(RunLoopFrameTimerTest, aThousandRoundsKeepNothing) {
  const auto held = std::make_shared<int>(0);
  for (int i = 0; i < 1000; ++i) {
    @autoreleasepool {
      const auto timer = frames.everyFrame(5ms, [held] { ++*held; });
    }
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(RunLoopFrameTimerTest, aThousandTimersEndWithTheirHandles) {
  const testing::MadeTimers timers;
  for (int i = 0; i < 1000; ++i) {
    @autoreleasepool {
      const auto timer = frames.everyFrame(1h, [] {});
    }
  }
  EXPECT_EQ(timers.count(), 1000U);
  EXPECT_EQ(timers.countValid(), 0U);
}

}  // namespace
}  // namespace voxtrel
