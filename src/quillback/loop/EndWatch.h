#pragma once

#include <functional>
#include <thread>

#include "common/posix/FileDescriptor.h"
#include "common/posix/StopSignals.h"
#include "quillback/loop/ParentWatch.h"

namespace voxtrel::quillback {

/// Notices that the engine must end, because of a signal or because its parent is gone, and sees to
/// it that it does: whatever hangs is ended together with the process kPatience later.
/// Thread: one makes and destroys it; it waits on one of its own.  Borrows: the signals.
/// Fails by: the process's end with status 0, that being what was asked for.
class EndWatch {
 public:
  /// `onEnd` is called once, on the watch's thread.
  EndWatch(const StopSignals& signals, std::function<void()> onEnd);
  EndWatch(const EndWatch&) = delete;
  EndWatch& operator=(const EndWatch&) = delete;
  ~EndWatch();

 private:
  void wait(int signals);

  ParentWatch parent_;
  FileDescriptor over_;
  std::function<void()> onEnd_;
  std::thread thread_;
};

}  // namespace voxtrel::quillback
