#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "voxtrel/platform/ChildProcess.h"
#include "voxtrel/platform/posix/ThreadGroup.h"

namespace voxtrel {

class ChildSupervision;

/// Starts children, each with a thread that makes it and waits for its end and a thread that reads
/// its output.
/// Thread: any; destroyed by none of its children's.  Owns: the threads. Its end ends the children
/// that still run and waits until their last callback has returned.
/// Fails by: a message that says why.
class PosixChildProcessLauncher : public ChildProcessLauncher {
 public:
  PosixChildProcessLauncher();
  PosixChildProcessLauncher(const PosixChildProcessLauncher&) = delete;
  PosixChildProcessLauncher& operator=(const PosixChildProcessLauncher&) = delete;
  ~PosixChildProcessLauncher() override;

  [[nodiscard]] Result start(ChildOptions options) override;

 private:
  std::shared_ptr<ChildProcess> startHere(const std::shared_ptr<ChildSupervision>& supervision);
  std::shared_ptr<ChildProcess> startOnOwnThread(
      const std::shared_ptr<ChildSupervision>& supervision);
  void remember(const std::shared_ptr<ChildProcess>& child);

  std::mutex mutex_;
  std::vector<std::weak_ptr<ChildProcess>> children_;
  ThreadGroup terminationThreads_;
};

}  // namespace voxtrel
