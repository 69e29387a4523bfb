#include "voxtrel/platform/posix/PosixChildProcess.h"

#include <csignal>

namespace voxtrel {

PosixChildProcess::~PosixChildProcess() {
  lifetime_->send(SIGKILL);
}

bool PosixChildProcess::isRunning() const {
  return !lifetime_->hasEnded();
}

void PosixChildProcess::terminate() {
  lifetime_->send(SIGTERM);
}

void PosixChildProcess::kill() {
  lifetime_->send(SIGKILL);
}

void PosixChildProcess::waitUntilExit() {
  lifetime_->waitUntilEnded();
}

}  // namespace voxtrel
