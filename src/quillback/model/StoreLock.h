#pragma once

#include <optional>
#include <string>

#include "common/posix/FileDescriptor.h"
#include "common/posix/StopSignals.h"
#include "quillback/model/SetupExit.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// The right to change a model's folder, which one process at a time has. It ends with the process,
/// however that ends; the file stays.
/// Thread: one.  Owns: the lock.
class StoreLock {
 public:
  /// Waits for whoever has it, and says so once.
  std::optional<SetupFailure> take(const std::string& folder, const StopSignals& stop,
                                   Output& output);

 private:
  FileDescriptor file_;
};

}  // namespace voxtrel::quillback
