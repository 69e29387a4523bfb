#pragma once

#include <deque>
#include <memory>
#include <mutex>

#include "voxtrel/platform/Scheduling.h"

class QEvent;
class QObject;

namespace voxtrel {

/// The main loop on Qt's event loop. Posted tasks run from a queue in batches of a few milliseconds,
/// so that a flood of them does not starve the tray, timers and D-Bus.
/// Thread: `post` from any; the others from the main thread.  Owns: tasks, timers.
/// Fails by: nothing; tasks still waiting when this is destroyed never run.
class QtMainLoop final : public MainLoop {
 public:
  QtMainLoop();
  ~QtMainLoop() override;
  QtMainLoop(const QtMainLoop&) = delete;
  QtMainLoop& operator=(const QtMainLoop&) = delete;

  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;
  [[nodiscard]] Subscription at(Clock::TimePoint time, Task task) override;
  [[nodiscard]] Subscription every(std::chrono::milliseconds interval, Task task) override;

 private:
  void runBatch();
  Subscription startTimer(std::chrono::milliseconds interval, bool repeats, Task task);

  std::mutex mutex_;
  std::deque<Task> queue_;
  /// Created on the main thread, where Qt deletes it; null while it is posted.
  std::unique_ptr<QEvent> wakeUp_;
  std::unique_ptr<QObject> receiver_;  ///< of the wake-ups; parent of the timers
};

}  // namespace voxtrel
