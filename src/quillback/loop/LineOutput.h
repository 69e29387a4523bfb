#pragma once

#include <sys/types.h>

#include <mutex>
#include <string>
#include <thread>

#include "common/posix/FileDescriptor.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Writes lines to a descriptor, each with one write. `print` never waits for a slow reader: lines
/// that do not fit are kept, and a thread that is started then writes them later.
/// Thread: any.  Owns: a separate descriptor for the same file; the thread.
/// Fails by: `hasLostLines`, once the reader is gone or kMaxWaitingBytes behind.
class LineOutput final : public Output {
 public:
  static constexpr std::size_t kMaxWaitingBytes = 4 << 20;

  explicit LineOutput(int fd);
  LineOutput(const LineOutput&) = delete;
  LineOutput& operator=(const LineOutput&) = delete;
  ~LineOutput() override;

  void print(std::string_view line) override;
  bool hasLostLines() const;

 private:
  bool writeOrKeep(std::string_view line);
  void writeWaiting();
  ssize_t writeSome() const;
  void flushUntilStopped();

  FileDescriptor file_;
  const bool isSocket_;
  FileDescriptor flusherWakeUp_;
  mutable std::mutex mutex_;  // guards the fields below and the order of writes
  std::string waiting_;       // whole lines, the first one perhaps partly written
  bool hasLostLines_ = false;
  bool stopped_ = false;
  std::thread flusher_;
};

}  // namespace voxtrel::quillback
