#pragma once

#include <chrono>
#include <functional>

#include "voxtrel/platform/Subscription.h"

namespace voxtrel {

/// The main thread, seen as a queue of tasks and timers.
/// Thread: `post` from any; the others from the main thread.
class MainLoop {
 public:
  using Task = std::function<void()>;

  virtual ~MainLoop() = default;

  /// Runs `task` on the main thread, after everything posted before it.
  virtual void post(Task task) = 0;

  /// Runs `task` once, `delay` from now. It cannot be taken back.
  virtual void postAfter(std::chrono::milliseconds delay, Task task) = 0;

  /// Runs `task` every `interval` until the handle is gone.
  [[nodiscard]] virtual Subscription every(std::chrono::milliseconds interval, Task task) = 0;
};

}  // namespace voxtrel
