#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <mutex>

namespace voxtrel {

/// A child's process id from its start until it is reaped. A signal reaches this child or nobody:
/// no id is signalled that the system may have given to another process by then.
/// Thread: any.
class ChildLifetime {
 public:
  /// What `reap` returns when some other code took the child's status.
  static constexpr int kUnknownStatus = -1;

  explicit ChildLifetime(pid_t pid) : pid_(pid) {}

  bool hasEnded() const;
  void send(int signal);
  void waitUntilEnded();

  /// Blocks until the child has ended and takes its status, and no other child's: its exit code, or
  /// the number of the signal that ended it. To be called once.
  int reap();

 private:
  const pid_t pid_;
  mutable std::mutex mutex_;
  std::condition_variable endedChanged_;
  bool ended_ = false;
};

}  // namespace voxtrel
