#pragma once

#import <AppKit/AppKit.h>
#include <unistd.h>

#include <chrono>
#include <functional>

namespace voxtrel {

/// A test that takes longer hangs.
constexpr unsigned kTestLimitSeconds = 40;

/// Counts the limit from now on, in a test that does much.
inline void restartTestLimit() {
  ::alarm(kTestLimitSeconds);
}

/// Runs the main run loop, events included, until `condition` holds; false after `limit`.
inline bool runUntil(const std::function<bool()>& condition,
                     std::chrono::milliseconds limit = std::chrono::seconds(10)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    @autoreleasepool {
      NSDate* soon = [NSDate dateWithTimeIntervalSinceNow:0.01];
      NSEvent* event = [NSApp nextEventMatchingMask:NSEventMaskAny
                                          untilDate:soon
                                             inMode:NSDefaultRunLoopMode
                                            dequeue:YES];
      if (event != nil) [NSApp sendEvent:event];
    }
  }
  return true;
}

/// Runs the main run loop for `duration`, to see that something does not happen.
inline void runFor(std::chrono::milliseconds duration) {
  runUntil([] { return false; }, duration);
}

/// Posts an event: a modal loop that was stopped sees so with the next one.
inline void wakeModalLoop() {
  [NSApp postEvent:[NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                      location:NSZeroPoint
                                 modifierFlags:0
                                     timestamp:0
                                  windowNumber:0
                                       context:nil
                                       subtype:0
                                         data1:0
                                         data2:0]
           atStart:NO];
}

/// Runs what waits in the main run loop.
inline void runOnce() {
  runFor(std::chrono::milliseconds(20));
}

}  // namespace voxtrel
