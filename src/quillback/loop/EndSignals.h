#pragma once

#include "common/posix/Descriptor.h"

namespace voxtrel::quillback {

/// The signals that ask a program to end: SIGTERM, SIGINT and SIGHUP. Made before any thread is, it
/// holds them back from all of them.
/// Thread: the main one, first of all.  Owns: the descriptor.
class EndSignals {
 public:
  EndSignals();
  /// Readable once such a signal has come.
  int fd() const { return signals_.get(); }

 private:
  Descriptor signals_;
};

}  // namespace voxtrel::quillback
