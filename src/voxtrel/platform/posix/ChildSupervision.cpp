#include "voxtrel/platform/posix/ChildSupervision.h"

#include <csignal>
#include <system_error>

#include "voxtrel/platform/posix/PosixChildProcess.h"
#include "voxtrel/platform/posix/SpawnedChild.h"

namespace voxtrel {

std::shared_ptr<ChildProcess> ChildSupervision::begin() {
  Pipe output = requirePipe();
  reader_.emplace(std::move(output.readEnd), options_.onOutput);
  lifetime_ = std::make_shared<ChildLifetime>(spawnChild(options_, output.writeEnd.get()));
  return std::make_shared<PosixChildProcess>(lifetime_);
}

void ChildSupervision::listen() {
  try {
    reader_->start();
  } catch (const std::system_error&) {
    lifetime_->send(SIGKILL);  // or it would stand still when the pipe is full
  }
}

void ChildSupervision::watch() {
  const int status = lifetime_->reap();
  reader_->finish();
  if (options_.onExit) options_.onExit(status);
}

void ChildSupervision::abandon() {
  lifetime_->send(SIGKILL);
  lifetime_->reap();
}

}  // namespace voxtrel
