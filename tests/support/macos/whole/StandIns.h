#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/Scheduling.h"

namespace voxtrel::testing {

/// Launches at once and leaves the running to the test. The end is the system's: its delegate is told
/// once, and the process stays.
/// Thread: the main thread.  Borrows: the delegate.
struct HeldApplication : Application {
  int run(ApplicationDelegate& newDelegate) override {
    delegate = &newDelegate;
    delegate->applicationDidFinishLaunching();
    return 0;
  }
  void terminate() override {
    if (++terminations == 1) delegate->applicationWillTerminate();
  }

  ApplicationDelegate* delegate = nullptr;
  int terminations = 0;
};

/// Names this file as the engine, whether it is there or not.
/// Thread: any.
class GivenEngine : public ApplicationBundle {
 public:
  explicit GivenEngine(std::string path) : path_(std::move(path)) {}

  std::optional<std::string> auxiliaryExecutable(std::string_view) const override { return path_; }

 private:
  const std::string path_;
};

/// A main loop that repeats more often, so that half a minute of polling takes about a second.
/// Thread: as the other's.  Borrows: the other.
class HurriedLoop : public MainLoop {
 public:
  explicit HurriedLoop(MainLoop& other) : other_(other) {}

  void post(Task task) override { other_.post(std::move(task)); }
  void postAfter(std::chrono::milliseconds delay, Task task) override {
    other_.postAfter(delay, std::move(task));
  }
  [[nodiscard]] Subscription at(Clock::TimePoint time, Task task) override {
    return other_.at(time, std::move(task));
  }
  [[nodiscard]] Subscription every(std::chrono::milliseconds interval, Task task) override {
    constexpr int kTimesFaster = 25;
    return other_.every(interval / kTimesFaster, std::move(task));
  }

 private:
  MainLoop& other_;
};

}  // namespace voxtrel::testing
