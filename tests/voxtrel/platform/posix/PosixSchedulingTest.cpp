#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <iterator>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "voxtrel/platform/posix/PosixScheduling.h"
#include "voxtrel/platform/posix/Waiting.h"

namespace voxtrel {
namespace {

using std::chrono::milliseconds;

std::size_t countThreads() {
  namespace fs = std::filesystem;
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator()));
}

TEST(BackgroundQueue, ATaskRunsOnAnotherThreadOnceItsTimeHasCome) {
  const SteadyClock clock;
  std::promise<std::pair<std::thread::id, Clock::TimePoint>> ran;
  ThreadedBackgroundQueue queue;
  const auto begin = clock.now();
  queue.runAfter(milliseconds(60), [&] {
    ran.set_value({std::this_thread::get_id(), clock.now()});
  });
  const auto [thread, time] = ran.get_future().get();
  EXPECT_NE(thread, std::this_thread::get_id());
  EXPECT_GE(time - begin, milliseconds(60));
  EXPECT_LT(time - begin, milliseconds(5000));
}

TEST(BackgroundQueue, TasksBeginInTheOrderInWhichTheyAreDue) {
  std::mutex mutex;
  std::vector<int> order;
  std::atomic<int> ran = 0;
  ThreadedBackgroundQueue queue;
  for (const int delay : {180, 20, 100}) {
    queue.runAfter(milliseconds(delay), [&, delay] {
      const std::lock_guard lock(mutex);
      order.push_back(delay);
      ++ran;
    });
  }
  ASSERT_TRUE(eventually([&] { return ran == 3; }));
  EXPECT_EQ(order, (std::vector<int>{20, 100, 180}));
}

TEST(BackgroundQueue, TasksThatBlockDelayNoOther) {
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  std::atomic<int> blocked = 0;
  std::atomic<bool> isPast = false;
  ThreadedBackgroundQueue queue;
  for (int i = 0; i < 5; ++i) {
    queue.runAfter(milliseconds(0), [&] {
      ++blocked;
      released.wait();
    });
  }
  ASSERT_TRUE(eventually([&] { return blocked == 5; }));
  queue.runAfter(milliseconds(10), [&] { isPast = true; });
  EXPECT_TRUE(eventually([&] { return isPast.load(); }));
  release.set_value();
}

TEST(BackgroundQueue, ATaskMayScheduleAnother) {
  std::atomic<int> ran = 0;
  ThreadedBackgroundQueue queue;
  std::function<void()> step = [&] {
    if (++ran < 200) queue.runAfter(milliseconds(0), step);
  };
  queue.runAfter(milliseconds(0), step);
  EXPECT_TRUE(eventually([&] { return ran == 200; }));
}

TEST(BackgroundQueue, ThereIsNoThreadBeforeTheFirstTaskAndOneAtMostWhenIdle) {
  std::thread([] {}).join();  // a sanitizer starts its own thread with the first one
  const std::size_t before = countThreads();
  ThreadedBackgroundQueue queue;
  EXPECT_EQ(countThreads(), before);
  std::atomic<int> ran = 0;
  for (int i = 0; i < 50; ++i) queue.runAfter(milliseconds(i % 3), [&] { ++ran; });
  EXPECT_TRUE(eventually([&] { return ran == 50 && countThreads() <= before + 1; }));
}

TEST(BackgroundQueue, ItsEndDropsWhatHasNotBegunAndWaitsForWhatHas) {
  auto kept = std::make_shared<int>(0);
  std::atomic<bool> hasBegun = false;
  bool isFinished = false;  // written by the task, read after the queue's end
  bool isLate = false;
  {
    ThreadedBackgroundQueue queue;
    queue.runAfter(std::chrono::hours(1), [kept, &isLate] { isLate = true; });
    queue.runAfter(milliseconds(0), [&] {
      hasBegun = true;
      eventually([] { return false; }, milliseconds(50));
      isFinished = true;
    });
    ASSERT_TRUE(eventually([&] { return hasBegun.load(); }));
    EXPECT_EQ(kept.use_count(), 2);
  }
  EXPECT_TRUE(isFinished);
  EXPECT_FALSE(isLate);
  EXPECT_EQ(kept.use_count(), 1) << "a dropped task is still held";
}

}  // namespace
}  // namespace voxtrel
