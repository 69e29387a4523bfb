#pragma once

#include <functional>
#include <thread>

#include "common/posix/FileDescriptor.h"
#include "common/posix/StopSignals.h"

namespace voxtrel::quillback {

/// Notices that the engine must end, because of a signal or because its parent is gone. If this is
/// not destroyed kEndTimeout later, something hangs, and it ends the process.
/// Thread: one makes and destroys it; it waits on a thread it owns.  Borrows: the signals.
/// Fails by: ending the process with status 0, because the end was asked for.
class EndWatch {
 public:
  /// `onEnd` is called once, on the watch's thread.
  EndWatch(const StopSignals& signals, std::function<void()> onEnd);
  EndWatch(const EndWatch&) = delete;
  EndWatch& operator=(const EndWatch&) = delete;
  ~EndWatch();

 private:
  /// The process that started this one. Process 1 does not count: it adopts orphans.
  struct Parent {
    static Parent find();

    FileDescriptor descriptor;  ///< readable once the parent has ended; may be closed
    bool isGone = false;        ///< it ended before we looked
  };

  void wait(int signals);

  Parent parent_ = Parent::find();
  FileDescriptor over_;  ///< readable once this is being destroyed
  std::function<void()> onEnd_;
  std::thread thread_;
};

}  // namespace voxtrel::quillback
