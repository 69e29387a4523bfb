#pragma once

#import <Foundation/Foundation.h>

#include <chrono>
#include <functional>

#include "voxtrel/platform/OverlayStage.h"
#include "voxtrel/platform/Subscription.h"

namespace voxtrel {

/// The modes in which the application's work goes on: also while a menu or an alert is open.
NSArray<NSRunLoopMode>* commonModes();

enum class Repeats { no, yes };

/// Runs `task` on the main thread after `interval`, once or repeatedly, until the handle is gone. The
/// task may end its own timer. Late ticks are not made up for.
/// Thread: the main thread.
[[nodiscard]] Subscription startRunLoopTimer(std::chrono::duration<double> interval,
                                             Repeats repeats, std::function<void()> task);

/// Frames from a timer of the main run loop.
/// Thread: the main thread.
class RunLoopFrameTimer final : public FrameTimer {
 public:
  [[nodiscard]] Subscription everyFrame(std::chrono::duration<double> interval,
                                        std::function<void()> task) override;
};

}  // namespace voxtrel
