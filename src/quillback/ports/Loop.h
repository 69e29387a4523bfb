#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace voxtrel::quillback {

/// The thread on which the engine decides: tasks, timers and watched descriptors.
/// Thread: `post` from any; the others from the loop's own.
class Loop {
 public:
  using Task = std::function<void()>;
  using TimePoint = std::chrono::steady_clock::time_point;

  /// A task that waits for its time; destroying it cancels the task.
  class Timer {
   public:
    virtual ~Timer() = default;
  };

  /// A watched descriptor, which must stay open as long as this lives; destroying it ends the watch.
  class Watch {
   public:
    virtual ~Watch() = default;
  };

  virtual ~Loop() = default;

  /// Runs `task` on the loop's thread, after everything posted before it.
  virtual void post(Task task) = 0;
  /// Runs `task` once, `delay` from now, unless the timer is gone by then.
  [[nodiscard]] virtual std::unique_ptr<Timer> after(std::chrono::milliseconds delay,
                                                     Task task) = 0;
  /// Runs `onReadable` whenever `descriptor` can be read or has failed, until the watch is gone. The
  /// task may destroy its own watch.
  [[nodiscard]] virtual std::unique_ptr<Watch> watch(int descriptor, Task onReadable) = 0;
  virtual TimePoint now() const = 0;
};

}  // namespace voxtrel::quillback
