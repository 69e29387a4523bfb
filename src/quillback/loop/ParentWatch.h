#pragma once

#include "common/posix/FileDescriptor.h"

namespace voxtrel::quillback {

/// The process that started this one.
/// Thread: one.  Owns: the descriptor.
class ParentWatch {
 public:
  ParentWatch();
  /// Readable once the parent has ended; -1 where there is none to wait for: process 1 adopts the
  /// children of others and never counts.
  int fd() const { return parent_.get(); }
  /// Whether it ended before this was made.
  bool isGone() const { return isGone_; }

 private:
  FileDescriptor parent_;
  bool isGone_ = false;
};

}  // namespace voxtrel::quillback
