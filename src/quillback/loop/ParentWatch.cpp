#include "quillback/loop/ParentWatch.h"

#include <sys/syscall.h>
#include <sys/types.h>

#include <cerrno>

namespace voxtrel::quillback {

ParentWatch::ParentWatch() {
  const pid_t parent = ::getppid();
  if (parent <= 1) return;
  parent_ = FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, parent, 0)));
  // The number could have gone to another process in between; its own children know better.
  isGone_ = ::getppid() != parent || (!parent_.isOpen() && errno == ESRCH);
}

}  // namespace voxtrel::quillback
