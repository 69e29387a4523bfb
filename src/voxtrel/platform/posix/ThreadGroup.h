#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace voxtrel {

/// Threads that come and go. Each that ends joins the one that ended before it, so that at most one
/// ended thread is kept.
/// Thread: any; destroyed by none of its own.  Owns: the threads.
class ThreadGroup {
 public:
  ThreadGroup() = default;
  ThreadGroup(const ThreadGroup&) = delete;
  ThreadGroup& operator=(const ThreadGroup&) = delete;

  /// Blocks until every thread has ended.
  ~ThreadGroup();

  /// Runs `work` on a new thread.
  /// Fails by: throwing std::system_error.
  void run(std::function<void()> work);

 private:
  using Threads = std::list<std::thread>;

  void finish(Threads::iterator self);

  std::mutex mutex_;
  std::condition_variable allEnded_;
  Threads running_;
  std::thread ended_;
};

}  // namespace voxtrel
