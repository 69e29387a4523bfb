#pragma once

#include <functional>

#include "voxtrel/platform/Subscription.h"

namespace voxtrel {

/// Tells when the machine goes to sleep and wakes.
/// Thread: the main thread.
class SleepWatch {
 public:
  virtual ~SleepWatch() = default;

  /// `handler` runs before the machine sleeps, which waits (within the platform's limit) until the
  /// handler returns.
  [[nodiscard]] virtual Subscription onWillSleep(std::function<void()> handler) = 0;
  [[nodiscard]] virtual Subscription onDidWake(std::function<void()> handler) = 0;
};

}  // namespace voxtrel
