#pragma once

#include <functional>

#include "voxtrel/platform/Subscription.h"

namespace voxtrel {

/// Reports that the machine goes to sleep and that it woke.
/// Thread: the main thread.
class SleepWatch {
 public:
  virtual ~SleepWatch() = default;

  /// `handler` runs before the machine sleeps. The machine waits for it, within the platform's limit.
  [[nodiscard]] virtual Subscription onWillSleep(std::function<void()> handler) = 0;
  [[nodiscard]] virtual Subscription onDidWake(std::function<void()> handler) = 0;
};

}  // namespace voxtrel
