#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <thread>
#include <utility>

#include "common/posix/Pipe.h"

namespace voxtrel {

/// Reads a child's output as it comes, on a thread it owns.
/// Thread: one at a time.  Owns: the thread, the pipe's reading end.
class OutputReader {
 public:
  using OnOutput = std::function<void(std::string_view bytes)>;

  /// `ended`: a new pipe, for the reader's own use. `onOutput` is called on the reading thread with
  /// the bytes of one read: at most 64 KiB, never empty.
  OutputReader(FileDescriptor output, Pipe ended, OnOutput onOutput)
      : output_(std::move(output)), ended_(std::move(ended)), onOutput_(std::move(onOutput)) {}
  OutputReader(const OutputReader&) = delete;
  OutputReader& operator=(const OutputReader&) = delete;
  ~OutputReader() { finish(); }

  /// Begins to read. False: the system has no thread for it.
  [[nodiscard]] bool start();

  /// To be called when the child has ended: reads what the pipe holds now and ends the thread, even
  /// if another process still has the pipe open. Does nothing when repeated.
  void finish();

 private:
  void run();
  bool waitForOutput() const;
  std::size_t readOnce(std::size_t limit);
  void readRest();

  FileDescriptor output_;
  Pipe ended_;  ///< hangs up when the child has ended
  OnOutput onOutput_;
  std::thread thread_;
};

}  // namespace voxtrel
