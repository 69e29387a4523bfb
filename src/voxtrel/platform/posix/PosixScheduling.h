#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>

#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/platform/posix/ThreadGroup.h"

namespace voxtrel {

/// The system's monotonic clock.
/// Thread: any.
class SteadyClock : public Clock {
 public:
  TimePoint now() const override;
  void sleepFor(std::chrono::milliseconds duration) override;
};

/// Runs tasks when they are due, on as many threads as there is work for. One thread sleeps until
/// the next task is due; a task that blocks keeps only its own thread.
/// Thread: any; its tasks must not destroy it.  Owns: the threads and the tasks. The destructor
/// waits for the tasks that have begun.
/// Fails by: ending the process when the system has no more threads.
class ThreadedBackgroundQueue : public BackgroundQueue {
 public:
  ThreadedBackgroundQueue() = default;
  ThreadedBackgroundQueue(const ThreadedBackgroundQueue&) = delete;
  ThreadedBackgroundQueue& operator=(const ThreadedBackgroundQueue&) = delete;
  ~ThreadedBackgroundQueue() override;

  void runAfter(std::chrono::milliseconds delay, Task task) override;

 private:
  using TimePoint = std::chrono::steady_clock::time_point;

  void work();
  Task nextTask();
  void provideWaiter();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::multimap<TimePoint, Task> pending_;  ///< tasks due at the same time stay in order
  bool hasWaiter_ = false;                  ///< a thread waits for the next task
  bool isEnding_ = false;
  ThreadGroup threads_;
};

}  // namespace voxtrel
