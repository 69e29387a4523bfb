#pragma once

#include <chrono>
#include <functional>

#include "voxtrel/platform/Subscription.h"

namespace voxtrel {

/// A repeating timer for animation: its ticks keep to a timeline, so that their mean rate is exact.
/// Thread: the main thread.
class FrameTimer {
 public:
  virtual ~FrameTimer() = default;

  /// Runs `task` every `interval` until the handle is gone. A tick that is late is made up for as
  /// soon as possible; after a stall of several, the oldest are left out.
  [[nodiscard]] virtual Subscription everyFrame(std::chrono::duration<double> interval,
                                                std::function<void()> task) = 0;
};

}  // namespace voxtrel
