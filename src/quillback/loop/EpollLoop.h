#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "common/posix/FileDescriptor.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// The loop of the thread that calls `run`; it sleeps until a task, a timer or a descriptor is due.
/// Thread: the one that runs it; `post` and `stop` from any.  Owns: three descriptors, all tasks.
/// Fails by: aborting with a message if there is no free descriptor at construction.
class EpollLoop final : public Loop {
 public:
  EpollLoop();
  EpollLoop(const EpollLoop&) = delete;
  EpollLoop& operator=(const EpollLoop&) = delete;
  ~EpollLoop() override;

  void post(Task task) override;
  [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override;
  [[nodiscard]] std::unique_ptr<Watch> watch(int descriptor, Task onReadable) override;
  TimePoint now() const override;

  /// Runs what is due until `stop`. Remaining tasks are kept.
  void run();
  /// Ends `run` after the task that is running.
  void stop();

 private:
  class TimerHandle;
  class WatchHandle;
  using TimerKey = std::pair<TimePoint, std::uint64_t>;

  void runPosted();
  void runTimers();
  void runWatch(std::uint64_t id);
  void armTimers();
  void stopAlarm();
  void add(int fd, std::uint64_t id);

  FileDescriptor epoll_;
  FileDescriptor wakeUp_;
  FileDescriptor alarm_;
  std::atomic<bool> stopped_ = false;
  std::uint64_t nextId_;
  std::map<TimerKey, Task> timers_;
  TimePoint alarmAt_ = TimePoint::max();
  std::map<std::uint64_t, std::shared_ptr<Task>> watches_;
  std::mutex mutex_;  // guards posted_
  std::vector<Task> posted_;
};

}  // namespace voxtrel::quillback
