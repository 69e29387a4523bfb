#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include "voxtrel/platform/Scheduling.h"

namespace voxtrel::testing {

/// Time that moves only when a test says so: clock, main loop and background queue in one. What is
/// due runs in order of its time, on the test's own thread.
class ManualTime : public Clock, public MainLoop, public BackgroundQueue {
 public:
  using Milliseconds = std::chrono::milliseconds;
  using Task = std::function<void()>;

  TimePoint now() const override { return now_; }

  /// A blocked thread: time passes for the world and for background threads, not for the main loop.
  void sleepFor(Milliseconds duration) override { moveTo(now_ + duration, false); }

  void post(Task task) override { add(Kind::main, now_, std::move(task)); }
  void postAfter(Milliseconds delay, Task task) override {
    add(Kind::main, now_ + delay, std::move(task));
  }
  void runAfter(Milliseconds delay, Task task) override {
    add(Kind::background, now_ + delay, std::move(task));
  }
  [[nodiscard]] Subscription at(TimePoint time, Task task) override {
    return timer(add(Kind::main, time, std::move(task)));
  }
  [[nodiscard]] Subscription every(Milliseconds interval, Task task) override {
    return timer(add(Kind::main, now_ + interval, std::move(task), interval));
  }

  /// An event outside the program; it happens even while a thread is blocked.
  void happensAfter(Milliseconds delay, Task event) { runAfter(delay, std::move(event)); }

  /// Lets `duration` pass with the main loop running.
  void advance(Milliseconds duration) { moveTo(now_ + duration, true); }
  /// Runs what is already due.
  void runPosted() { advance(Milliseconds(0)); }

  int timersRunning = 0;  ///< those with a handle
  int timersStarted = 0;

 private:
  using Id = std::size_t;
  enum class Kind { main, background };
  struct Entry {
    Id id;
    Kind kind;
    Task task;
    std::optional<Milliseconds> interval;
  };
  using Entries = std::multimap<TimePoint, Entry>;  // equal times keep the order of insertion

  Id add(Kind kind, TimePoint time, Task task, std::optional<Milliseconds> interval = {}) {
    entries_.emplace(time, Entry{++lastId_, kind, std::move(task), interval});
    return lastId_;
  }

  Subscription timer(Id id) {
    ++timersRunning;
    ++timersStarted;
    return Subscription([this, id] {
      --timersRunning;
      std::erase_if(entries_, [id](const auto& entry) { return entry.second.id == id; });
    });
  }

  void moveTo(TimePoint end, bool mainRuns) {
    for (auto next = nextDue(end, mainRuns); next != entries_.end();
         next = nextDue(end, mainRuns)) {
      now_ = std::max(now_, next->first);
      Entry entry = next->second;
      entries_.erase(next);
      if (entry.interval) entries_.emplace(now_ + *entry.interval, entry);
      entry.task();
    }
    now_ = std::max(now_, end);
  }

  Entries::iterator nextDue(TimePoint end, bool mainRuns) {
    for (auto entry = entries_.begin(); entry != entries_.end() && entry->first <= end; ++entry) {
      if (mainRuns || entry->second.kind == Kind::background) return entry;
    }
    return entries_.end();
  }

  TimePoint now_{std::chrono::hours(1)};
  Id lastId_ = 0;
  Entries entries_;
};

}  // namespace voxtrel::testing
