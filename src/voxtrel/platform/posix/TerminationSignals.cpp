#include "voxtrel/platform/posix/TerminationSignals.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace voxtrel {
namespace {

std::atomic<int> arrivedWriteEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler reads it");

/// A full pipe already says what there is to say.
void passOn(int signal) {
  const int errnoBefore = errno;
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const ssize_t written = ::write(arrivedWriteEnd.load(), &byte, sizeof byte);
  errno = errnoBefore;
}

void neverBlock(const FileDescriptor& descriptor) {
  const int flags = ::fcntl(descriptor.number(), F_GETFL);
  ::fcntl(descriptor.number(), F_SETFL, flags | O_NONBLOCK);
}

}  // namespace

TerminationSignals::TerminationSignals() : arrived_(Pipe::open()) {
  neverBlock(arrived_.readEnd);
  neverBlock(arrived_.writeEnd);
  arrivedWriteEnd = arrived_.writeEnd.number();
  struct sigaction action {};
  action.sa_handler = passOn;
  action.sa_flags = SA_RESTART;
  sigset_t unblocked;
  sigemptyset(&unblocked);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], &action, &before_[i]);
    sigaddset(&unblocked, kSignals[i]);
  }
  pthread_sigmask(SIG_UNBLOCK, &unblocked, &maskBefore_);
}

TerminationSignals::~TerminationSignals() {
  pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], &before_[i], nullptr);
  }
  arrivedWriteEnd = -1;
}

// NOLINTNEXTLINE(readability-make-member-function-const): it takes
std::optional<int> TerminationSignals::take() {
  unsigned char signal = 0;
  const ssize_t count = ::read(arrived_.readEnd.number(), &signal, sizeof signal);
  if (count != static_cast<ssize_t>(sizeof signal)) return {};
  return signal;
}

}  // namespace voxtrel
