#pragma once

#include <poll.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <utility>
#include <vector>

#include "quillback/ports/Loop.h"

namespace voxtrel::quillback::test {

/// A loop in real time that a test can run repeatedly, each time for a given span.
/// Thread: one.
class PollLoop final : public Loop {
 public:
  void post(Task task) override { posted_.push_back(std::move(task)); }

  [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override {
    const Key key{now() + delay, nextNumber_++};
    timers_->emplace(key, std::move(task));
    return std::make_unique<PollTimer>(timers_, key);
  }

  TimePoint now() const override { return std::chrono::steady_clock::now(); }

  [[nodiscard]] std::unique_ptr<Watch> watch(int descriptor, Task onReadable) override {
    const std::uint64_t id = nextNumber_++;
    watches_->emplace(id, std::pair(descriptor, std::move(onReadable)));
    return std::make_unique<PollWatch>(watches_, id);
  }

  void runFor(std::chrono::milliseconds span) {
    const TimePoint end = now() + span;
    do {
      step(end);
    } while (now() < end);
  }

 private:
  using Key = std::pair<TimePoint, std::uint64_t>;
  using Timers = std::map<Key, Task>;
  using Watches = std::map<std::uint64_t, std::pair<int, Task>>;

  class PollTimer final : public Timer {
   public:
    PollTimer(std::shared_ptr<Timers> timers, Key key) : timers_(std::move(timers)), key_(key) {}
    PollTimer(const PollTimer&) = delete;
    PollTimer& operator=(const PollTimer&) = delete;
    ~PollTimer() override { timers_->erase(key_); }

   private:
    std::shared_ptr<Timers> timers_;
    Key key_;
  };

  class PollWatch final : public Watch {
   public:
    PollWatch(std::shared_ptr<Watches> watches, std::uint64_t id)
        : watches_(std::move(watches)), id_(id) {}
    PollWatch(const PollWatch&) = delete;
    PollWatch& operator=(const PollWatch&) = delete;
    ~PollWatch() override { watches_->erase(id_); }

   private:
    std::shared_ptr<Watches> watches_;
    const std::uint64_t id_;
  };

  void step(TimePoint end) {
    for (; !posted_.empty(); posted_.pop_front()) Task(posted_.front())();
    while (!timers_->empty() && timers_->begin()->first.first <= now()) {
      timers_->extract(timers_->begin()).mapped()();
    }
    const TimePoint due = timers_->empty() ? end : std::min(end, timers_->begin()->first.first);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - now()).count();
    std::vector<pollfd> descriptors;
    std::vector<std::uint64_t> ids;
    for (const auto& [id, watched] : *watches_) {
      descriptors.push_back({watched.first, POLLIN, 0});
      ids.push_back(id);
    }
    poll(descriptors.data(), descriptors.size(), std::max(0, static_cast<int>(left)));
    for (std::size_t i = 0; i < ids.size(); ++i) {
      const auto watched = watches_->find(ids[i]);
      if (descriptors[i].revents == 0 || watched == watches_->end()) continue;
      Task(watched->second.second)();  // a copy: the task may destroy its watch
    }
  }

  std::uint64_t nextNumber_ = 0;
  std::deque<Task> posted_;
  std::shared_ptr<Timers> timers_ = std::make_shared<Timers>();
  std::shared_ptr<Watches> watches_ = std::make_shared<Watches>();
};

}  // namespace voxtrel::quillback::test
