#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "support/macos/Observed.h"
#import "support/macos/RunLoop.h"
#import "voxtrel/platform/macos/application/RunLoopMainLoop.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

struct RunLoopMainLoopTest : ::testing::Test {
  std::unique_ptr<RunLoopMainLoop> owner = std::make_unique<RunLoopMainLoop>();
  RunLoopMainLoop& loop = *owner;
};

TEST_F(RunLoopMainLoopTest, runsPostedTasksInOrderAndNeverImmediately) {
  std::vector<int> ran;
  for (int i = 0; i < 100; ++i) loop.post([&, i] { ran.push_back(i); });
  EXPECT_TRUE(ran.empty());
  EXPECT_TRUE(runUntil([&] { return ran.size() == 100; }));
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST_F(RunLoopMainLoopTest, aTaskPostedByATaskRunsToo) {
  bool ran = false;
  loop.post([&] { loop.post([&] { ran = true; }); });
  EXPECT_TRUE(runUntil([&] { return ran; }));
}

TEST_F(RunLoopMainLoopTest, postsFromManyThreadsAllRunInTheOrderOfTheirThread) {
  constexpr std::size_t kThreads = 4;
  constexpr int kPosts = 2000;
  std::vector<int> last(kThreads, -1);
  bool isInOrder = true;
  std::size_t ran = 0;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kPosts; ++i) {
        loop.post([&, t, i] {
          isInOrder = isInOrder && std::exchange(last[t], i) == i - 1 && NSThread.isMainThread;
          ++ran;
        });
      }
    });
  }
  EXPECT_TRUE(runUntil([&] { return ran == kThreads * kPosts; }));
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(isInOrder);
}

TEST_F(RunLoopMainLoopTest, tasksRunWhileOneOfThemRunsANestedLoop) {
  bool inner = false;
  bool outer = false;
  loop.post([&] { outer = runUntil([&] { return inner; }); });
  loop.post([&] { inner = true; });
  EXPECT_TRUE(runUntil([&] { return outer; }));
}

TEST_F(RunLoopMainLoopTest, tasksAndTimersRunWhileAnAlertIsOpen) {
  NSWindow* window = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 100, 100)
                                                 styleMask:NSWindowStyleMaskTitled
                                                   backing:NSBackingStoreBuffered
                                                     defer:NO];
  window.releasedWhenClosed = NO;
  bool posted = false;
  const auto timer = loop.every(10ms, [&] {
    if (!std::exchange(posted, true)) loop.post([] { [NSApp stopModal]; });
    wakeModalLoop();
  });
  [NSApp runModalForWindow:window];
  [window close];
  EXPECT_TRUE(posted);
}

TEST_F(RunLoopMainLoopTest, aFloodOfPostsDoesNotStarveTimers) {
  bool isOver = false;
  std::function<void()> flood = [&] {
    if (!isOver) loop.post(flood);
  };
  for (int i = 0; i < 1000; ++i) loop.post(flood);
  int ticks = 0;
  const auto timer = loop.every(5ms, [&] { ++ticks; });
  EXPECT_TRUE(runUntil([&] { return ticks >= 5; }));
  isOver = true;
}

TEST_F(RunLoopMainLoopTest, aDelayedTaskRunsOnceAndNotEarly) {
  const auto start = std::chrono::steady_clock::now();
  int ran = 0;
  loop.postAfter(50ms, [&] { ++ran; });
  ASSERT_TRUE(runUntil([&] { return ran > 0; }));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 49ms);
  runFor(120ms);
  EXPECT_EQ(ran, 1);
}

TEST_F(RunLoopMainLoopTest, aTimeThatHasPassedRunsSoonAndOnce) {
  int ran = 0;
  const auto timer = loop.at(std::chrono::steady_clock::now() - 1s, [&] { ++ran; });
  EXPECT_EQ(ran, 0);
  ASSERT_TRUE(runUntil([&] { return ran > 0; }));
  runFor(50ms);
  EXPECT_EQ(ran, 1);
}

TEST_F(RunLoopMainLoopTest, aTimerWithoutItsHandleNeverRunsAndKeepsNothing) {
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> weak = held;
  auto timer = loop.every(5ms, [held = std::move(held)] { ++*held; });
  ASSERT_TRUE(runUntil([&] { return *weak.lock() > 1; }));
  timer.reset();
  EXPECT_TRUE(weak.expired());
  runFor(30ms);
}

TEST_F(RunLoopMainLoopTest, aTimerMayEndItself) {
  int ran = 0;
  Subscription timer = loop.every(5ms, [&] {
    timer.reset();
    ++ran;
  });
  ASSERT_TRUE(runUntil([&] { return ran > 0; }));
  runFor(30ms);
  EXPECT_EQ(ran, 1);
}

TEST_F(RunLoopMainLoopTest, nothingRunsOnceTheLoopIsGone) {
  bool ran = false;
  loop.post([&] { ran = true; });
  loop.postAfter(10ms, [&] { ran = true; });
  owner.reset();
  runFor(50ms);
  EXPECT_FALSE(ran);
}

TEST_F(RunLoopMainLoopTest, aThousandRoundsKeepNothing) {
  const auto held = std::make_shared<int>(0);
  for (int i = 0; i < 1000; ++i) {
    @autoreleasepool {
      RunLoopMainLoop shortLived;
      shortLived.post([held] { ++*held; });
      shortLived.postAfter(1ms, [held] { ++*held; });
      const auto timer = shortLived.every(1ms, [held] { ++*held; });
      loop.post([held] { ++*held; });
    }
  }
  EXPECT_TRUE(runUntil([&] { return held.use_count() == 1; }));
  EXPECT_EQ(*held, 1000);
}

TEST_F(RunLoopMainLoopTest, aThousandTimersEndWithTheirHandles) {
  const testing::MadeTimers timers;
  for (int i = 0; i < 1000; ++i) {
    @autoreleasepool {
      const auto repeating = loop.every(1h, [] {});
      const auto once = loop.at(std::chrono::steady_clock::now() + 1h, [] {});
    }
  }
  EXPECT_EQ(timers.count(), 2000U);
  EXPECT_EQ(timers.countValid(), 0U);
}

}  // namespace
}  // namespace voxtrel
