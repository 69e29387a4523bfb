#pragma once

#include <memory>
#include <mutex>
#include <system_error>
#include <vector>

#include "voxtrel/platform/ChildProcess.h"
#include "voxtrel/platform/posix/ThreadGroup.h"

namespace voxtrel {

/// Starts children. Each has a termination thread, which waits for its end, and a thread that reads
/// its output.
/// Thread: any; not destroyed on a child's thread.  Owns: the threads. The destructor kills the
/// children that still run and waits until their last callback has returned.
/// Fails by: a message that says why.
class PosixChildProcessLauncher : public ChildProcessLauncher {
 public:
  PosixChildProcessLauncher();
  PosixChildProcessLauncher(const PosixChildProcessLauncher&) = delete;
  PosixChildProcessLauncher& operator=(const PosixChildProcessLauncher&) = delete;
  ~PosixChildProcessLauncher() override;

  [[nodiscard]] Result start(ChildOptions options) override;

 private:
  class Supervision;
  using Started = tl::expected<std::shared_ptr<ChildProcess>, std::error_code>;

  Started startHere(const std::shared_ptr<Supervision>& supervision);
  Started startOnOwnThread(const std::shared_ptr<Supervision>& supervision);
  void remember(const std::shared_ptr<ChildProcess>& child);

  std::mutex mutex_;
  std::vector<std::weak_ptr<ChildProcess>> children_;
  ThreadGroup terminationThreads_;
};

}  // namespace voxtrel
