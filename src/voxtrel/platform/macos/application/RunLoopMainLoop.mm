#import "voxtrel/platform/macos/application/RunLoopMainLoop.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <mutex>
#include <utility>

#import "voxtrel/platform/macos/application/RunLoopTimers.h"

using std::chrono::steady_clock;
using voxtrel::MainLoop;

namespace {

/// How long a batch of posted tasks may keep the main thread.
constexpr std::chrono::milliseconds kBatchLimit{4};

}  // namespace

/// Posted tasks in their order. The run loop holds it while a wake-up is on its way.
@interface VXTaskQueue : NSObject
- (void)post:(MainLoop::Task)task;
/// Drops the tasks that wait, and those that come later.
- (void)close;
@end

@implementation VXTaskQueue {
  std::mutex _mutex;
  std::deque<MainLoop::Task> _tasks;
  bool _wakesUp;
  bool _isClosed;
}

- (void)post:(MainLoop::Task)task {
  const std::lock_guard lock(_mutex);
  if (_isClosed) return;
  _tasks.push_back(std::move(task));
  [self wakeUp];
}

/// Called with the lock held.
- (void)wakeUp {
  if (std::exchange(_wakesUp, true)) return;
  [self performSelectorOnMainThread:@selector(runBatch)
                         withObject:nil
                      waitUntilDone:NO
                              modes:voxtrel::commonModes()];
}

- (void)runBatch {
  const auto deadline = steady_clock::now() + kBatchLimit;
  std::unique_lock lock(_mutex);
  _wakesUp = false;
  // A task may run a nested loop; this wake-up runs the rest of the queue there.
  if (_tasks.size() > 1) [self wakeUp];
  while (!_tasks.empty()) {
    @autoreleasepool {
      MainLoop::Task task = std::move(_tasks.front());
      _tasks.pop_front();
      lock.unlock();
      task();
    }
    const bool outOfTime = steady_clock::now() >= deadline;
    lock.lock();
    if (outOfTime) break;
  }
  if (!_tasks.empty()) [self wakeUp];
}

- (void)close {
  std::deque<MainLoop::Task> dropped;
  const std::lock_guard lock(_mutex);
  _isClosed = true;
  dropped.swap(_tasks);
}

@end

namespace voxtrel {

RunLoopMainLoop::RunLoopMainLoop() : queue_([VXTaskQueue new]) {}

RunLoopMainLoop::~RunLoopMainLoop() {
  [queue_ close];
}

void RunLoopMainLoop::post(Task task) {
  [queue_ post:std::move(task)];
}

void RunLoopMainLoop::postAfter(std::chrono::milliseconds delay, Task task) {
  const auto queue = queue_;
  const std::chrono::duration<double> seconds = delay;
  NSTimer* timer = [NSTimer timerWithTimeInterval:seconds.count()
                                          repeats:NO
                                            block:^(NSTimer*) {
                                              [queue post:task];
                                            }];
  [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
}

Subscription RunLoopMainLoop::at(Clock::TimePoint time, Task task) {
  const std::chrono::duration<double> delay = time - steady_clock::now();
  return startRunLoopTimer(std::max(delay, std::chrono::duration<double>(0)), Repeats::no,
                           std::move(task));
}

Subscription RunLoopMainLoop::every(std::chrono::milliseconds interval, Task task) {
  return startRunLoopTimer(interval, Repeats::yes, std::move(task));
}

}  // namespace voxtrel
