#include "common/posix/ThreadSignals.h"

#include <pthread.h>

#include <initializer_list>

namespace voxtrel {

void keepSignalsAway() {
  sigset_t signals;
  sigfillset(&signals);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
    sigdelset(&signals, fault);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

SignalBlock::SignalBlock() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before_);
}

SignalBlock::~SignalBlock() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace voxtrel
