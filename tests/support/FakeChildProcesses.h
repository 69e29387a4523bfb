#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/ManualTime.h"
#include "voxtrel/platform/ChildProcess.h"

namespace voxtrel::testing {

/// A child that does only what the test says.
struct FakeChild : ChildProcess {
  FakeChild(ChildOptions newOptions, ManualTime& newTime)
      : options(std::move(newOptions)), time(newTime) {}

  bool isRunning() const override { return running; }
  void terminate() override {
    ++terminations;
    if (endsAfterTerminate) time.happensAfter(*endsAfterTerminate, [this] { exit(15); });
  }
  void kill() override {
    ++kills;
    exit(9);
  }
  void waitUntilExit() override { ++waits; }

  void print(std::string_view bytes) const { options.onOutput(bytes); }
  void exit(int status) {
    if (!std::exchange(running, false)) return;
    options.onExit(status);
  }

  ChildOptions options;
  ManualTime& time;
  bool running = true;
  std::optional<std::chrono::milliseconds> endsAfterTerminate = std::chrono::milliseconds(0);
  int terminations = 0, kills = 0, waits = 0;
};

struct FakeLauncher : ChildProcessLauncher {
  explicit FakeLauncher(ManualTime& newTime) : time(newTime) {}
  FakeLauncher(const FakeLauncher&) = delete;
  FakeLauncher& operator=(const FakeLauncher&) = delete;
  /// Breaks cycles: a child's callbacks may own the child.
  ~FakeLauncher() override {
    for (const auto& child : children) child->options = {};
  }

  Result start(ChildOptions options) override {
    startedAt.push_back(time.now());
    if (const auto why = failure) {
      if (onFailing) onFailing();
      return tl::unexpected(*why);
    }
    const auto child = std::make_shared<FakeChild>(std::move(options), time);
    child->endsAfterTerminate = endsAfterTerminate;
    children.push_back(child);
    if (onStarted) onStarted(*child);
    return child;
  }

  FakeChild& last() const { return *children.back(); }
  std::size_t running() const {
    std::size_t count = 0;
    for (const auto& child : children) count += child->running ? 1U : 0U;
    return count;
  }

  ManualTime& time;
  std::vector<std::shared_ptr<FakeChild>> children;  // every one started, oldest first
  std::vector<Clock::TimePoint> startedAt;           // also the failed ones
  std::optional<std::string> failure;                // what the next starts answer
  std::optional<std::chrono::milliseconds> endsAfterTerminate = std::chrono::milliseconds(0);
  std::function<void(FakeChild&)> onStarted;  // before start() returns
  std::function<void()> onFailing;            // the same, for a start that fails
};

}  // namespace voxtrel::testing
