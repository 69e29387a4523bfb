#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "voxtrel/platform/ChildProcess.h"
#include "voxtrel/platform/posix/SpawnedChild.h"

namespace voxtrel {

/// A child's process id from its start until it is reaped. Signals are sent only before that: later
/// the system may give the id to another process.
/// Thread: any.
class ChildLifetime {
 public:
  /// What `reap` returns when other code has already taken the child's status.
  static constexpr int kUnknownStatus = -1;

  /// `tether`: held until the child has ended.
  explicit ChildLifetime(SpawnedChild child) : pid_(child.pid), tether_(std::move(child.tether)) {}

  bool hasEnded() const;
  void send(int signal);
  void waitUntilEnded();

  /// Blocks until this child has ended and takes its status: the exit code, or the number of the
  /// signal that ended it. To be called once.
  int reap();

 private:
  const pid_t pid_;
  std::shared_ptr<ChildTether> tether_;
  mutable std::mutex mutex_;
  std::condition_variable endedChanged_;
  bool ended_ = false;
};

/// The owner's handle of a child. Destroying it kills the child.
/// Thread: any.  Owns: the lifetime, shared with the thread that reaps the child.
class PosixChildProcess : public ChildProcess {
 public:
  explicit PosixChildProcess(std::shared_ptr<ChildLifetime> lifetime)
      : lifetime_(std::move(lifetime)) {}
  PosixChildProcess(const PosixChildProcess&) = delete;
  PosixChildProcess& operator=(const PosixChildProcess&) = delete;
  ~PosixChildProcess() override;

  bool isRunning() const override;
  void terminate() override;
  void kill() override;
  void waitUntilExit() override;

 private:
  const std::shared_ptr<ChildLifetime> lifetime_;
};

}  // namespace voxtrel
