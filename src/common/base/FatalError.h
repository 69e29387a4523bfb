#pragma once

#include <cstdio>
#include <cstdlib>

namespace voxtrel {

/// Stops the process for a condition that no caller could handle.
[[noreturn]] inline void fatalError(const char* message) {
  std::fprintf(stderr, "voxtrel: fatal: %s\n", message);
  std::abort();
}

}  // namespace voxtrel
