#pragma once

#include <memory>
#include <utility>

#include "voxtrel/platform/ChildProcess.h"
#include "voxtrel/platform/posix/ChildLifetime.h"

namespace voxtrel {

/// The owner's hold on a child.
/// Thread: any.  Owns: the child's life, shared with the thread that reaps it.
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
