#pragma once

#include <csignal>

namespace voxtrel {

/// Keeps the application's signals away from the calling thread and the threads it makes: their
/// handlers run elsewhere. Faults of the thread itself are still told.
void keepSignalsAway();

/// No signal's handler runs on this thread as long as this lives.
/// Thread: the one that made it.
class SignalBlock {
 public:
  SignalBlock();
  ~SignalBlock();
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;

 private:
  sigset_t before_;
};

}  // namespace voxtrel
