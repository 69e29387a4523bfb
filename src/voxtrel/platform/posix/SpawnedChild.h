#pragma once

#include <sys/types.h>

#include "voxtrel/platform/ChildProcess.h"

namespace voxtrel {

/// Starts the program that `options` name, with both output streams going to the descriptor
/// `output`, which must not be a standard one. Returns its process id once the program runs. The
/// child ends with the calling thread.
/// Fails by: throwing std::system_error; whatever was made by then is gone again.
pid_t spawnChild(const ChildOptions& options, int output);

}  // namespace voxtrel
