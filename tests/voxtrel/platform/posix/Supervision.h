#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "support/FakePorts.h"
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"
#include "voxtrel/platform/posix/PosixScheduling.h"
#include "voxtrel/supervisor/ProcessManager.h"

namespace voxtrel {

/// A main loop that the test's thread runs.
/// Thread: `post` from any; the others from the test's.
class TestMainLoop : public MainLoop {
 public:
  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;
  [[nodiscard]] Subscription at(Clock::TimePoint time, Task task) override;
  [[nodiscard]] Subscription every(std::chrono::milliseconds interval, Task task) override;

  /// Runs what is posted until `holds` or for `limit`. Returns whether it holds.
  bool runUntil(const std::function<bool()>& holds,
                std::chrono::milliseconds limit = std::chrono::seconds(60));

  std::size_t mostWaiting() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<Task> tasks_;
  std::size_t mostWaiting_ = 0;
};

/// Keeps notifications that are posted from any thread.
class RecordedNotifications : public testing::FakeNotifications {
 public:
  void post(UserNotification notification) override;
  std::size_t count() const;

 private:
  mutable std::mutex mutex_;
};

/// A log for many threads.
class QuietLog : public Log {
 public:
  bool isEnabled(LogLevel level) const override { return level != LogLevel::debug; }
  void write(LogLevel, std::string_view, std::string_view) override {}
};

/// The supervisor over the real adapters, with a scripted engine in a temporary folder.
class Supervision : public ::testing::Test {
 protected:
  Supervision();
  ~Supervision() override;

  /// Sets what each engine started from now on does, one command per line.
  void script(const std::string& commands) const;

  /// Process ids of all running engines, also those of other owners.
  std::vector<int> runningEngines() const;

  const std::filesystem::path folder_;
  ExecutableFolder bundle_;
  QuietLog log_;
  RecordedNotifications notifications_;
  TestMainLoop mainLoop_;
  SteadyClock clock_;
  PosixChildProcessLauncher launcher_;
  ThreadedBackgroundQueue backgroundQueue_;
  std::shared_ptr<ProcessManager> manager_;
};

}  // namespace voxtrel
