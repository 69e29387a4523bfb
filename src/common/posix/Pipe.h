#pragma once

#include <array>
#include <system_error>

#include <tl/expected.hpp>

#include "common/posix/FileDescriptor.h"

namespace voxtrel {

/// Both ends of a pipe. No child inherits them, and neither has the number of a standard stream.
/// Thread: one at a time.  Owns: both descriptors.
struct Pipe {
  static tl::expected<Pipe, std::error_code> open();

  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

/// The system's way to make a pipe whose ends no program inherits; defined in the system's folder.
/// Returns 0, or -1 with errno.
int openPipe(std::array<int, 2>& ends);

}  // namespace voxtrel
