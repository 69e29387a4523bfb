#pragma once

#include "common/posix/FileDescriptor.h"

namespace voxtrel {

/// Both ends of a pipe. Neither is inherited by any child nor takes the number of a standard
/// stream.
/// Thread: one at a time.  Owns: both descriptors.
struct Pipe {
  /// Fails by: throwing std::system_error.
  static Pipe open();

  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

}  // namespace voxtrel
