#pragma once

#include "voxtrel/platform/FrameTimer.h"

namespace voxtrel {

/// Frames on the kernel's own timeline, in nanoseconds: Qt's timers count whole milliseconds.
/// Thread: the main thread, whose event loop must be Qt's.
/// Fails by: no ticks, if the system has no descriptor left.
class TimerFdFrameTimer final : public FrameTimer {
 public:
  Subscription everyFrame(std::chrono::duration<double> interval,
                          std::function<void()> task) override;
};

}  // namespace voxtrel
