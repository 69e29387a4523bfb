#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>

#include <tl/expected.hpp>

namespace voxtrel {

/// Any number of short-lived threads. Each one joins the one that ended before it, so that at most
/// one ended thread is kept.
/// Thread: any; not destroyed on one of its threads.  Owns: the threads.
class ThreadGroup {
 public:
  ThreadGroup() = default;
  ThreadGroup(const ThreadGroup&) = delete;
  ThreadGroup& operator=(const ThreadGroup&) = delete;

  /// Blocks until every thread has ended.
  ~ThreadGroup();

  /// Runs `work` on a new thread.
  [[nodiscard]] tl::expected<void, std::error_code> run(std::function<void()> work);

 private:
  using Threads = std::list<std::thread>;

  void finish(Threads::iterator self);

  std::mutex mutex_;
  std::condition_variable allEnded_;
  Threads running_;
  std::thread ended_;
};

}  // namespace voxtrel
