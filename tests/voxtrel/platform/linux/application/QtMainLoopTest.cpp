#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <atomic>
#include <thread>
#include <vector>

#include "voxtrel/platform/linux/application/QtMainLoop.h"

namespace voxtrel {
namespace {

using std::chrono::milliseconds;

struct QtMainLoopTest : testing::Test {
  void run() { events.exec(); }
  void quit() { events.quit(); }

  int argc = 1;
  char name[5] = "test";
  char* argv[2] = {name, nullptr};
  QCoreApplication application{argc, argv};
  QEventLoop events;
  QtMainLoop loop;
};

TEST_F(QtMainLoopTest, runsPostedTasksInOrderAndNeverImmediately) {
  std::vector<int> ran;
  for (int i = 0; i < 100; ++i) loop.post([&, i] { ran.push_back(i); });
  loop.post([&] { quit(); });
  EXPECT_TRUE(ran.empty());
  run();
  ASSERT_EQ(ran.size(), 100U);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST_F(QtMainLoopTest, aTaskPostedByATaskRunsToo) {
  loop.post([&] { loop.post([&] { quit(); }); });
  run();
}

TEST_F(QtMainLoopTest, tasksRunWhileOneOfThemRunsANestedLoop) {
  QEventLoop nested;
  loop.post([&] {
    nested.exec();
    quit();
  });
  loop.post([&] { nested.quit(); });
  run();
}

TEST_F(QtMainLoopTest, postsFromManyThreadsAllRunInTheOrderOfTheirThread) {
  constexpr int kThreads = 4;
  constexpr int kPosts = 2000;
  std::vector<int> last(kThreads, -1);
  bool isInOrder = true;
  int ran = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kPosts; ++i) {
        loop.post([&, t, i] {
          isInOrder = isInOrder && std::exchange(last[static_cast<std::size_t>(t)], i) == i - 1;
          if (++ran == kThreads * kPosts) quit();
        });
      }
    });
  }
  run();
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(isInOrder);
}

TEST_F(QtMainLoopTest, aFloodOfPostsDoesNotStarveTimers) {
  std::atomic<bool> isOver{false};
  std::function<void()> flood = [&] {
    if (!isOver) loop.post(flood);
  };
  for (int i = 0; i < 1000; ++i) loop.post(flood);
  int ticks = 0;
  const Subscription timer = loop.every(milliseconds(1), [&] {
    if (++ticks < 5) return;
    isOver = true;
    loop.post([&] { quit(); });
  });
  run();
  EXPECT_GE(ticks, 5);
}

TEST_F(QtMainLoopTest, aTimerEndsWithItsHandleAlsoWithinItsOwnTask) {
  int ticks = 0;
  Subscription timer;
  timer = loop.every(milliseconds(1), [&] {
    ++ticks;
    timer.reset();
    loop.postAfter(milliseconds(10), [&] { quit(); });
  });
  run();
  EXPECT_EQ(ticks, 1);
}

TEST_F(QtMainLoopTest, tasksStillWaitingWhenTheLoopIsDestroyedAreDropped) {
  int ran = 0;
  Subscription timer;
  {
    QtMainLoop shortLived;
    shortLived.post([&] { ++ran; });
    shortLived.postAfter(milliseconds(0), [&] { ++ran; });
    timer = shortLived.every(milliseconds(1), [&] { ++ran; });
  }
  timer.reset();
  loop.postAfter(milliseconds(5), [&] { quit(); });
  run();
  EXPECT_EQ(ran, 0);
}

TEST_F(QtMainLoopTest, aTaskAtATimeRunsOnceAndNotBefore) {
  const auto time = std::chrono::steady_clock::now() + std::chrono::microseconds(10'500);
  int runs = 0;
  std::chrono::steady_clock::time_point ran;
  Subscription timer = loop.at(time, [&] {
    ++runs;
    ran = std::chrono::steady_clock::now();
    timer.reset();
  });
  loop.postAfter(milliseconds(50), [&] { quit(); });
  run();
  EXPECT_EQ(runs, 1);
  EXPECT_GE(ran, time);
}

TEST_F(QtMainLoopTest, aTaskAtAPastTimeRunsSoonAndOneWithoutItsHandleNever) {
  int runs = 0;
  const Subscription past =
      loop.at(std::chrono::steady_clock::now() - milliseconds(5), [&] { ++runs; });
  static_cast<void>(loop.at(std::chrono::steady_clock::now(), [&] { runs += 100; }));
  loop.postAfter(milliseconds(20), [&] { quit(); });
  run();
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace voxtrel
