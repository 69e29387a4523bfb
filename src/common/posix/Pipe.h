#pragma once

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

}  // namespace voxtrel
