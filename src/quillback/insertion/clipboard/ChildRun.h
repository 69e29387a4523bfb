#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/posix/FileDescriptor.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// A small program that runs in the background. Destroying this leaves the program running.
/// Thread: the loop's.  Owns: the process descriptor.
/// Fails by: null from `start`; an exit status other than 0.
class ChildRun {
 public:
  using OnEnd = std::function<void(int exitStatus)>;

  /// Runs `words` (a program, looked up in $PATH, and its arguments) with `input` as its standard
  /// input; its output is discarded. `onEnd` gets the exit status, or -1 after a signal, and may
  /// destroy this.
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
