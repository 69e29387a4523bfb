#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace voxtrel::quillback {

/// The thread on which the engine decides, seen as a queue of tasks and timers.
/// Thread: `post` from any; the others from the loop's own.
class Loop {
 public:
  using Task = std::function<void()>;
  using TimePoint = std::chrono::steady_clock::time_point;

  /// A task that is still to run; destroying it takes the task back.
  class Timer {
   public:
    virtual ~Timer() = default;
  };

  virtual ~Loop() = default;

  /// Runs `task` on the loop's thread, after everything posted before it.
  virtual void post(Task task) = 0;
  /// Runs `task` once, `delay` from now, unless the timer is gone by then.
  [[nodiscard]] virtual std::unique_ptr<Timer> after(std::chrono::milliseconds delay,
                                                     Task task) = 0;
  virtual TimePoint now() const = 0;
};

}  // namespace voxtrel::quillback
