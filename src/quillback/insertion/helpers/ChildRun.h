#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/posix/FileDescriptor.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// A small program that is run beside us and waited for without blocking.
/// Thread: the loop's.  Owns: its handle. Destroying it leaves the program running.
class ChildRun {
 public:
  using OnEnd = std::function<void(int exitStatus)>;

  /// Runs `words` (the program, looked up in $PATH, and its arguments) with `input` as its standard
  /// input and without any output. Nothing where it cannot be started. `onEnd` is called once and may
  /// destroy the run.
  [[nodiscard]] static std::unique_ptr<ChildRun> start(const std::vector<std::string>& words,
                                                       const std::string& input, Loop& loop,
                                                       OnEnd onEnd);

 private:
  ChildRun(int processId, OnEnd onEnd);
  void handleEnd();

  int processId_;
  FileDescriptor process_;
  OnEnd onEnd_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
