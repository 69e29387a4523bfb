#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <thread>

#include "common/posix/Pipe.h"

namespace voxtrel {

/// A pipe.  Fails by: throwing std::system_error.
Pipe requirePipe();

/// Reads a child's output on a thread of its own, as it comes.
/// Thread: one at a time.  Owns: the thread, the pipe's reading end.
class OutputReader {
 public:
  using Take = std::function<void(std::string_view bytes)>;

  /// `take` is called on the reading thread with what one read gave, at most 64 KiB, never nothing.
  /// Fails by: throwing std::system_error, as `start` does.
  OutputReader(FileDescriptor output, Take take);
  OutputReader(const OutputReader&) = delete;
  OutputReader& operator=(const OutputReader&) = delete;
  ~OutputReader() { finish(); }

  /// Begins to read.
  void start();

  /// To be called when the child has ended: takes what the pipe holds at this moment and ends the
  /// thread, whoever else holds the pipe open or goes on writing. Harmless when repeated.
  void finish();

 private:
  void run();
  bool waitForOutput() const;
  std::size_t takeOnce(std::size_t limit);
  void takeRest();

  FileDescriptor output_;
  Take take_;
  Pipe ended_;  ///< hangs up when the child has ended
  std::thread thread_;
};

}  // namespace voxtrel
