#pragma once

#import <Foundation/Foundation.h>

#include "voxtrel/platform/Scheduling.h"

@class VXTaskQueue;

namespace voxtrel {

/// The main loop on the main thread's run loop. Posted tasks run from a queue in batches of a few
/// milliseconds, so that a flood of them does not starve events and timers. Not the main dispatch
/// queue: that stands still while one of its tasks shows an alert.
/// Thread: `post` from any; the others from the main thread.  Owns: tasks, timers.
/// Fails by: nothing; tasks still waiting when this is destroyed never run.
class RunLoopMainLoop final : public MainLoop {
 public:
  RunLoopMainLoop();
  ~RunLoopMainLoop() override;
  RunLoopMainLoop(const RunLoopMainLoop&) = delete;
  RunLoopMainLoop& operator=(const RunLoopMainLoop&) = delete;

  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;
  [[nodiscard]] Subscription at(Clock::TimePoint time, Task task) override;
  [[nodiscard]] Subscription every(std::chrono::milliseconds interval, Task task) override;

 private:
  VXTaskQueue* const queue_;
};

}  // namespace voxtrel
