#pragma once

#include <chrono>
#include <functional>

#include "voxtrel/platform/Subscription.h"

namespace voxtrel {

/// Monotonic time.
/// Thread: any.
class Clock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  virtual ~Clock() = default;

  virtual TimePoint now() const = 0;

  /// Blocks the calling thread for `duration`.
  virtual void sleepFor(std::chrono::milliseconds duration) = 0;
};

/// The main thread as a queue of tasks and timers.
/// Thread: `post` from any; the others from the main thread.
class MainLoop {
 public:
  using Task = std::function<void()>;

  virtual ~MainLoop() = default;

  /// Runs `task` on the main thread, after everything posted before it.
  virtual void post(Task task) = 0;

  /// Runs `task` once, `delay` from now. It cannot be cancelled.
  virtual void postAfter(std::chrono::milliseconds delay, Task task) = 0;

  /// Runs `task` once at `time`, or soon if that has passed, unless the handle is gone by then.
  [[nodiscard]] virtual Subscription at(Clock::TimePoint time, Task task) = 0;

  /// Runs `task` every `interval` until the handle is gone.
  [[nodiscard]] virtual Subscription every(std::chrono::milliseconds interval, Task task) = 0;
};

/// Background threads for work that may block.
/// Thread: any.
class BackgroundQueue {
 public:
  using Task = std::function<void()>;

  virtual ~BackgroundQueue() = default;

  /// Runs `task` on a background thread, `delay` from now. Tasks may run at the same time. Tasks
  /// that have not begun when the queue is destroyed never run.
  virtual void runAfter(std::chrono::milliseconds delay, Task task) = 0;
};

}  // namespace voxtrel
