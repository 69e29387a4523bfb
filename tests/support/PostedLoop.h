#pragma once

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "quillback/ports/Loop.h"

namespace voxtrel::quillback::test {

/// Runs the tasks that other threads post, while the test waits for something. It has no timers and
/// watches no descriptors.
/// Thread: `post` from any; the others from one.
class PostedLoop final : public Loop {
 public:
  void post(Task task) override {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    posted_.notify_all();
  }

  [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds /*delay*/,
                                             Task /*task*/) override {
    std::abort();
  }

  [[nodiscard]] std::unique_ptr<Watch> watch(int /*descriptor*/, Task /*onReadable*/) override {
    std::abort();
  }

  TimePoint now() const override { return std::chrono::steady_clock::now(); }

  /// Runs tasks until `isDone`; false if that does not happen within `limit`.
  bool runUntil(const std::function<bool()>& isDone,
                std::chrono::milliseconds limit = std::chrono::seconds(60)) {
    const TimePoint end = now() + limit;
    while (!isDone()) {
      std::unique_lock lock(mutex_);
      if (!posted_.wait_until(lock, end, [this] { return !tasks_.empty(); })) return false;
      const Task task = std::move(tasks_.front());
      tasks_.pop_front();
      lock.unlock();
      task();
    }
    return true;
  }

  std::size_t waitingTasks() {
    const std::lock_guard lock(mutex_);
    return tasks_.size();
  }

 private:
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<Task> tasks_;
};

}  // namespace voxtrel::quillback::test
