#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <map>
#include <utility>

#include "quillback/ports/Loop.h"

namespace voxtrel::quillback::test {

/// A loop whose clock moves only in `advance`. Posted tasks run in `runPosted` or `advance`. It watches
/// no descriptors.
/// Thread: one.
class ManualLoop final : public Loop {
 public:
  void post(Task task) override { posted_.push_back(std::move(task)); }

  [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override {
    const Key key{now_ + delay, nextNumber_++};
    timers_->emplace(key, std::move(task));
    return std::make_unique<ManualTimer>(timers_, key);
  }

  [[nodiscard]] std::unique_ptr<Watch> watch(int /*descriptor*/, Task /*onReadable*/) override {
    std::abort();
  }

  TimePoint now() const override { return now_; }

  /// Runs all posted tasks, including those they post.
  void runPosted() {
    while (!posted_.empty()) {
      const Task task = std::move(posted_.front());
      posted_.pop_front();
      task();
    }
  }

  /// Runs posted tasks, then every timer due within `span`, in order and at its time.
  void advance(std::chrono::milliseconds span) {
    const TimePoint end = now_ + span;
    runPosted();
    while (!timers_->empty() && timers_->begin()->first.first <= end) {
      const auto due = timers_->extract(timers_->begin());
      now_ = std::max(now_, due.key().first);
      due.mapped()();
      runPosted();
    }
    now_ = end;
  }

  bool isIdle() const { return posted_.empty() && timers_->empty(); }

 private:
  using Key = std::pair<TimePoint, std::uint64_t>;
  using Timers = std::map<Key, Task>;

  class ManualTimer final : public Timer {
   public:
    ManualTimer(std::weak_ptr<Timers> timers, Key key) : timers_(std::move(timers)), key_(key) {}
    ManualTimer(const ManualTimer&) = delete;
    ManualTimer& operator=(const ManualTimer&) = delete;
    ~ManualTimer() override {
      if (const auto timers = timers_.lock()) timers->erase(key_);
    }

   private:
    std::weak_ptr<Timers> timers_;
    Key key_;
  };

  TimePoint now_{std::chrono::hours(1)};
  std::uint64_t nextNumber_ = 0;
  std::deque<Task> posted_;
  std::shared_ptr<Timers> timers_ = std::make_shared<Timers>();
};

}  // namespace voxtrel::quillback::test
