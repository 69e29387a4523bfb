#import "voxtrel/platform/macos/application/RunLoopTimers.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <utility>

namespace voxtrel {

NSArray<NSRunLoopMode>* commonModes() {
  return @[ NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode ];
}

Subscription startRunLoopTimer(std::chrono::duration<double> interval, Repeats repeats,
                               std::function<void()> task) {
  // The handle owns the task, so that all that it holds is gone with the handle.
  auto owned = std::make_shared<const std::function<void()>>(std::move(task));
  const std::weak_ptr<const std::function<void()>> weak = owned;
  NSTimer* timer = [NSTimer timerWithTimeInterval:interval.count()
                                          repeats:repeats == Repeats::yes
                                            block:^(NSTimer*) {
                                              if (const auto held = weak.lock()) (*held)();
                                            }];
  [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
  return Subscription([timer, owned = std::move(owned)] { [timer invalidate]; });
}

Subscription RunLoopFrameTimer::everyFrame(std::chrono::duration<double> interval,
                                           std::function<void()> task) {
  return startRunLoopTimer(interval, Repeats::yes, std::move(task));
}

}  // namespace voxtrel
