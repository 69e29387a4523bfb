#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>

#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/platform/posix/ThreadGroup.h"

namespace voxtrel {

/// Runs tasks when they are due, on as many threads as have something to do. One thread waits for
/// the next task, asleep until it is due; a task that blocks keeps its own thread only.
/// Thread: any; destroyed by none of its tasks.  Owns: the threads and the tasks. Its end waits for
/// the tasks that have begun.
/// Fails by: ending the process when the system has no thread to give.
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
