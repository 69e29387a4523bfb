#include <gtest/gtest.h>

#import "support/macos/RunLoop.h"
#import "voxtrel/platform/macos/application/RunLoopTimers.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

struct RunLoopFrameTimerTest : testing::Test {
  RunLoopFrameTimer frames;
};

TEST_F(RunLoopFrameTimerTest, framesComeAtTheirRate) {
  int count = 0;
  const auto timer = frames.everyFrame(std::chrono::duration<double>(1.0 / 60), [&] { ++count; });
  runFor(1000ms);
  EXPECT_GT(count, 40);
  EXPECT_LE(count, 61);
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

}  // namespace
}  // namespace voxtrel
