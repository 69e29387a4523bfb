#pragma once

#include <sys/types.h>

#include <system_error>

#include <tl/expected.hpp>

#include "voxtrel/platform/ChildProcess.h"

namespace voxtrel {

/// Starts the program of `options` with both output streams going to the descriptor `output`, which
/// must not be a standard one. Returns its process id once the program runs. The child is killed
/// when the calling thread ends.
tl::expected<pid_t, std::error_code> spawnChild(const ChildOptions& options, int output);

// What each system does its own way; defined in the system's folder. The first two run between fork
// and exec, perhaps in the parent's memory: they allocate nothing and take no lock.

/// Asks the system to kill the calling process when the thread that created it ends. `parent`: the
/// process of that thread. False: refused, or the parent has already ended; errno says which.
bool dieWithParentThread(pid_t parent) noexcept;

/// Makes the next exec close every descriptor above the standard three.
void closeDescriptorsOnExec() noexcept;

/// Whether the calling thread lives as long as its process, so that its children may too.
bool livesAsLongAsProcess() noexcept;

}  // namespace voxtrel
