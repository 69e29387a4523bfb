#pragma once

#include <chrono>
#include <functional>

namespace voxtrel {

/// Threads for work that may block, away from the main thread.
/// Thread: any.
class BackgroundQueue {
 public:
  using Task = std::function<void()>;

  virtual ~BackgroundQueue() = default;

  /// Runs `task` on a background thread, `delay` from now. Tasks may overlap each other. What has
  /// not begun when the queue is destroyed never runs.
  virtual void runAfter(std::chrono::milliseconds delay, Task task) = 0;
};

}  // namespace voxtrel
