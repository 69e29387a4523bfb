#include "quillback/model/StopSignals.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace voxtrel::quillback {

namespace {

/// Whoever started us may not want an end with the terminal (nohup) or with Ctrl+C ("&" in a script).
bool isIgnored(int number) {
  struct sigaction action {};
  return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

StopSignals::StopSignals() {
  sigset_t wanted;
  sigemptyset(&wanted);
  sigaddset(&wanted, SIGTERM);
  for (const int number : {SIGINT, SIGHUP}) {
    if (!isIgnored(number)) sigaddset(&wanted, number);
  }
  pthread_sigmask(SIG_BLOCK, &wanted, &before_);
  handle_ = FileHandle(::signalfd(-1, &wanted, SFD_CLOEXEC | SFD_NONBLOCK));

  struct sigaction ignored {};
  ignored.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignored, &pipeBefore_);
  sigaction(SIGXFSZ, &ignored, &fileSizeBefore_);
}

StopSignals::~StopSignals() {
  // A request that has been seen must not end the process once it is let through again.
  signalfd_siginfo taken{};
  while (::read(handle_.get(), &taken, sizeof taken) == sizeof taken) continue;
  sigaction(SIGPIPE, &pipeBefore_, nullptr);
  sigaction(SIGXFSZ, &fileSizeBefore_, nullptr);
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool StopSignals::waitFor(std::chrono::milliseconds limit) const {
  pollfd stop{handle_.get(), POLLIN, 0};
  return ::poll(&stop, 1, static_cast<int>(limit.count())) > 0;
}

}  // namespace voxtrel::quillback
