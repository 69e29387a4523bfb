#pragma once

#include <memory>

#include "common/posix/FileDescriptor.h"
#include "voxtrel/platform/posix/SpawnedChild.h"

namespace voxtrel {

/// A shell that kills the child when the application's end of a pipe closes, which happens however the
/// application ends. macOS tells no child of its parent's death; a kqueue in a helper program would,
/// but this way needs no program of ours and runs on every POSIX system alike.
/// The child itself gives its id into the pipe before it becomes its program, so that it never runs
/// without its guard.
/// Thread: one at a time.  Owns: the shell, which it ends, and the pipe's end.
class GuardProcess final : public ChildTether {
 public:
  static tl::expected<std::shared_ptr<ChildTether>, std::error_code> start();

  GuardProcess(pid_t shell, FileDescriptor pipe);
  GuardProcess(const GuardProcess&) = delete;
  GuardProcess& operator=(const GuardProcess&) = delete;
  ~GuardProcess() override;

  bool attach(pid_t parent) noexcept override;

 private:
  const pid_t shell_;
  const FileDescriptor pipe_;
};

}  // namespace voxtrel
