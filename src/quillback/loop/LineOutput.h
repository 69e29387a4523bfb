#pragma once

#include <sys/types.h>

#include <mutex>
#include <string>
#include <thread>

#include "common/posix/FileDescriptor.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Lines to a descriptor, each by one write. A reader who does not read keeps nobody waiting: what
/// does not fit stays here and a thread of its own, which is there only then, hands it on.
/// Thread: any.  Owns: a descriptor of its own for the same file; the thread.
/// Fails by: `hasLostLines`: once the reader is gone, or is kMostWaitingBytes behind.
class LineOutput final : public Output {
 public:
  static constexpr std::size_t kMostWaitingBytes = 4 << 20;

  explicit LineOutput(int fd);
  LineOutput(const LineOutput&) = delete;
  LineOutput& operator=(const LineOutput&) = delete;
  ~LineOutput() override;

  void print(std::string_view line) override;
  bool hasLostLines() const;

 private:
  void writeWaiting();
  ssize_t writeSome() const;
  void flushUntilStopped();

  FileDescriptor file_;
  const bool isSocket_;
  FileDescriptor flusherWakeUp_;
  mutable std::mutex mutex_;  // over the fields below, and over the order of writes
  std::string waiting_;       // whole lines, the first of which may be written in part
  bool hasLostLines_ = false;
  bool stopped_ = false;
  std::thread flusher_;
};

}  // namespace voxtrel::quillback
