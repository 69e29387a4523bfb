#include "voxtrel/platform/posix/PosixChildProcess.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>

namespace voxtrel {
namespace {

/// Waits for the end but leaves the child a zombie, so that its id is not reused yet. False: there
/// is no such child.
bool waitForEnd(pid_t pid) {
  siginfo_t information{};
  int result = 0;
  do {
    result = ::waitid(P_PID, static_cast<id_t>(pid), &information, WEXITED | WNOWAIT);
  } while (result < 0 && errno == EINTR);
  return result == 0;
}

int takeStatus(pid_t pid) {
  int status = 0;
  pid_t taken = 0;
  do {
    taken = ::waitpid(pid, &status, 0);
  } while (taken < 0 && errno == EINTR);
  if (taken != pid) return ChildLifetime::kUnknownStatus;
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

bool ChildLifetime::hasEnded() const {
  const std::lock_guard lock(mutex_);
  return ended_;
}

void ChildLifetime::send(int signal) {
  const std::lock_guard lock(mutex_);
  if (!ended_) ::kill(pid_, signal);
}

void ChildLifetime::waitUntilEnded() {
  std::unique_lock lock(mutex_);
  endedChanged_.wait(lock, [this] { return ended_; });
}

int ChildLifetime::reap() {
  const bool isOurs = waitForEnd(pid_);
  tether_.reset();
  const std::lock_guard lock(mutex_);
  const int status = isOurs ? takeStatus(pid_) : kUnknownStatus;
  ended_ = true;
  endedChanged_.notify_all();
  return status;
}

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
