#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/posix/FileDescriptor.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// Writes a text into a pipe as fast as its reader takes it, and closes the pipe.
/// Thread: the loop's.  Owns: the pipe's end.  Borrows: Loop (must outlive this).
class PipeWriter {
 public:
  using OnEnd = std::function<void(bool isWhole)>;

  /// `onEnd` is called once, with whether all was written; maybe before this returns.
  PipeWriter(FileDescriptor pipe, std::string text, Loop& loop, OnEnd onEnd);

  /// True once all was written or the reader is gone.
  bool isDone() const { return !pipe_.isOpen(); }

 private:
  void write();

  FileDescriptor pipe_;
  std::string text_;
  OnEnd onEnd_;
  std::size_t written_ = 0;
  FileDescriptor writable_;  // becomes readable when the pipe takes more
  std::unique_ptr<Loop::Watch> watch_;
};

/// Reads a pipe to its end.
/// Thread: the loop's.  Owns: the pipe's end.  Borrows: Loop (must outlive this).
class PipeReader {
 public:
  using OnEnd = std::function<void(std::string text)>;

  /// `onEnd` is called once, from the loop, and may destroy this. What is longer than `limit` gives an
  /// empty text.
  PipeReader(FileDescriptor pipe, std::size_t limit, Loop& loop, OnEnd onEnd);

 private:
  void read();

  FileDescriptor pipe_;
  std::size_t limit_;
  OnEnd onEnd_;
  std::string text_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
