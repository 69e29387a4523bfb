#pragma once

#include <memory>
#include <string>

#include "common/posix/FileDescriptor.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// Writes a text into a pipe as fast as its reader takes it, and closes the pipe.
/// Thread: the loop's.  Owns: the pipe's end.  Borrows: Loop (must outlive this).
class PipeWriter {
 public:
  PipeWriter(FileDescriptor pipe, std::string text, Loop& loop);

  /// True once all was written or the reader is gone.
  bool isDone() const { return !pipe_.isOpen(); }

 private:
  void write();

  FileDescriptor pipe_;
  std::string text_;
  std::size_t written_ = 0;
  FileDescriptor writable_;  // becomes readable when the pipe takes more
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
