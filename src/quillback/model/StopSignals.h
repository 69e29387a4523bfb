#pragma once

#include <chrono>
#include <csignal>

#include "quillback/model/FileHandle.h"

namespace voxtrel::quillback {

/// While it lives, SIGTERM, and SIGINT and SIGHUP where the process was not started to ignore them, are
/// requests to stop that somebody asks for, and writing to a closed pipe or beyond a file's limit is
/// an error rather than the end.
/// Thread: the one that made it; threads started earlier must have these signals blocked.
/// Owns: the process's handling of these signals; its end restores what was before.
class StopSignals {
 public:
  StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  ~StopSignals();

  bool isRequested() const { return waitFor(std::chrono::milliseconds(0)); }
  /// Waits until stop is requested, which it returns, or the time is over.
  bool waitFor(std::chrono::milliseconds limit) const;
  /// Readable once stop is requested.
  int descriptor() const { return handle_.get(); }

 private:
  sigset_t before_{};
  struct sigaction pipeBefore_ {};
  struct sigaction fileSizeBefore_ {};
  FileHandle handle_;
};

}  // namespace voxtrel::quillback
