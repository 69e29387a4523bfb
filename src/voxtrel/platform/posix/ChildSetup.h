#pragma once

#include <sys/types.h>

namespace voxtrel {

// What each system does in its own way when a child is made; defined in the system's folder.
// `dieWithParentThread` and `closeDescriptorsOnExec` run between fork and exec, where the memory
// may still be the parent's: they allocate nothing and take no lock.

/// The calling process is ended (SIGKILL) when the thread that created it ends, and so whenever the
/// process of that thread does. `parent`: that process. False: refused, or it has already ended;
/// errno says which.
bool dieWithParentThread(pid_t parent) noexcept;

/// Whether the calling thread lives as long as its process, so that its children may too.
bool livesAsLongAsProcess() noexcept;

/// Every descriptor above the standard three will be closed by the next exec.
void closeDescriptorsOnExec() noexcept;

}  // namespace voxtrel
