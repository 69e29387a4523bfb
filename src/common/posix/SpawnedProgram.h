#pragma once

#include <sys/types.h>

#include <string>
#include <system_error>
#include <vector>

#include <tl/expected.hpp>

namespace voxtrel {

/// Starts `words`: a program, looked up in $PATH, and its arguments. It gets the descriptor `input`
/// as standard input, /dev/null for both outputs and no other descriptor; default signal handlers
/// and an empty signal mask. Returns its process id; the caller waits for it.
/// Thread: any.
tl::expected<pid_t, std::error_code> spawnProgram(const std::vector<std::string>& words, int input);

}  // namespace voxtrel
