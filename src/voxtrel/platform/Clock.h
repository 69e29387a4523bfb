#pragma once

#include <chrono>

namespace voxtrel {

/// Monotonic time, and waiting on it.
/// Thread: any.
class Clock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  virtual ~Clock() = default;

  virtual TimePoint now() const = 0;

  /// Blocks the calling thread for `duration`.
  virtual void sleepFor(std::chrono::milliseconds duration) = 0;
};

}  // namespace voxtrel
