#pragma once

#include "voxtrel/platform/OverlayStage.h"

namespace voxtrel {

/// Frame timer over the kernel's timerfd, in nanoseconds; Qt's timers count whole milliseconds.
/// Thread: the main thread, which must run Qt's event loop.
/// Fails by: no ticks, if the process has no descriptor left.
class TimerFdFrameTimer final : public FrameTimer {
 public:
  Subscription everyFrame(std::chrono::duration<double> interval,
                          std::function<void()> task) override;
};

}  // namespace voxtrel
