#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <chrono>
#include <thread>

#include "voxtrel/platform/linux/overlay/TimerFdFrameTimer.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::duration<double> kInterval(1.0 / 60.0);

struct TimerFdFrameTimerTest : ::testing::Test {
  static void runLoopUntil(const std::function<bool()>& done) {
    while (!done()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }

  int argc = 1;
  char name[5] = "test";
  char* argv[2] = {name, nullptr};
  QCoreApplication application{argc, argv};
  TimerFdFrameTimer timer;
};

TEST_F(TimerFdFrameTimerTest, TicksAtSixtyHertzAndNotAtTheNearestMillisecond) {
  int ticks = 0;
  const auto start = Clock::now();
  const Subscription running = timer.everyFrame(kInterval, [&] { ++ticks; });
  runLoopUntil([&] { return ticks >= 180; });
  const std::chrono::duration<double> passed = Clock::now() - start;
  // Whole milliseconds would make 2.88 or 3.06 seconds of it.
  EXPECT_GE(passed.count(), 2.99);
  EXPECT_LE(passed.count(), 3.05);
}

TEST_F(TimerFdFrameTimerTest, MakesUpForALateTick) {
  int ticks = 0;
  const auto start = Clock::now();
  const Subscription running = timer.everyFrame(kInterval, [&] { ++ticks; });
  while (Clock::now() < start + 55ms) std::this_thread::yield();
  QCoreApplication::processEvents();
  const auto due = static_cast<int>((Clock::now() - start) / kInterval);
  EXPECT_GE(ticks, 3);
  EXPECT_LE(ticks, due);
}

TEST_F(TimerFdFrameTimerTest, DoesNotMakeUpForALongStall) {
  int ticks = 0;
  const auto start = Clock::now();
  const Subscription running = timer.everyFrame(1ms, [&] { ++ticks; });
  while (Clock::now() < start + 100ms) std::this_thread::yield();
  QCoreApplication::processEvents();
  EXPECT_LE(ticks, 12);
  EXPECT_GE(ticks, 1);
}

TEST_F(TimerFdFrameTimerTest, StopsWithItsHandleEvenIfTheTickDropsIt) {
  int ticks = 0, others = 0;
  Subscription running = timer.everyFrame(1ms, [&] {
    ++ticks;
    running.reset();
  });
  const Subscription other = timer.everyFrame(2ms, [&] { ++others; });
  runLoopUntil([&] { return others >= 10; });
  EXPECT_EQ(ticks, 1);
}

}  // namespace
}  // namespace voxtrel
