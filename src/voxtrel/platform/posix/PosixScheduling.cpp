#include "voxtrel/platform/posix/PosixScheduling.h"

#include <thread>
#include <utility>

#include "common/base/Fatal.h"

namespace voxtrel {

Clock::TimePoint SteadyClock::now() const {
  return std::chrono::steady_clock::now();
}

void SteadyClock::sleepFor(std::chrono::milliseconds duration) {
  std::this_thread::sleep_for(duration);
}

ThreadedBackgroundQueue::~ThreadedBackgroundQueue() {
  std::multimap<TimePoint, Task> dropped;
  const std::lock_guard lock(mutex_);
  isEnding_ = true;
  dropped.swap(pending_);
  changed_.notify_all();
}

void ThreadedBackgroundQueue::runAfter(std::chrono::milliseconds delay, Task task) {
  const TimePoint due = std::chrono::steady_clock::now() + delay;
  const std::lock_guard lock(mutex_);
  if (isEnding_) return;
  pending_.emplace(due, std::move(task));
  provideWaiter();
  changed_.notify_one();
}

/// Called with the lock held.
void ThreadedBackgroundQueue::provideWaiter() {
  if (std::exchange(hasWaiter_, true)) return;
  if (!threads_.run([this] { work(); })) fatalError("no thread for background work");
}

/// What each thread does: waits and works in turn, until another one waits in its place.
void ThreadedBackgroundQueue::work() {
  while (Task task = nextTask()) {
    task();
    task = nullptr;
    const std::lock_guard lock(mutex_);
    if (std::exchange(hasWaiter_, true)) return;
  }
}

/// Blocks until a task is due; none when the queue ends. The caller is the waiter until this
/// returns.
BackgroundQueue::Task ThreadedBackgroundQueue::nextTask() {
  std::unique_lock lock(mutex_);
  while (!isEnding_) {
    if (pending_.empty()) {
      changed_.wait(lock);
    } else if (const TimePoint due = pending_.begin()->first;
               due > std::chrono::steady_clock::now()) {
      changed_.wait_until(lock, due);
    } else {
      Task task = std::move(pending_.extract(pending_.begin()).mapped());
      hasWaiter_ = false;
      if (!pending_.empty()) provideWaiter();
      return task;
    }
  }
  return nullptr;
}

}  // namespace voxtrel
