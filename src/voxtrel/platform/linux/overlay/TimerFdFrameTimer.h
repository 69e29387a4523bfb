#pragma once

#include "voxtrel/platform/OverlayStage.h"

namespace voxtrel {

/// Frame timer over the kernel's timerfd, in nanoseconds; Qt's timers count whole milliseconds.
/// Ticks keep to a timeline, so their mean rate is exact: late ticks are made up for at once; after a
/// long stall the oldest are dropped.
/// Thread: the main thread, which must run Qt's event loop.
/// Fails by: no ticks, if the process has no descriptor left.
class TimerFdFrameTimer final : public FrameTimer {
 public:
  Subscription everyFrame(std::chrono::duration<double> interval,
                          std::function<void()> task) override;
};

}  // namespace voxtrel
