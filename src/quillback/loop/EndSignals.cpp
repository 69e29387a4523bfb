#include "quillback/loop/EndSignals.h"

#include <pthread.h>
#include <sys/signalfd.h>

#include <csignal>

namespace voxtrel::quillback {
namespace {

/// Whoever started us may not want an end with the terminal (nohup) or with Ctrl+C ("&" in a script).
bool isIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t endSignals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  for (const int signal : {SIGINT, SIGHUP}) {
    if (!isIgnored(signal)) sigaddset(&set, signal);
  }
  return set;
}

}  // namespace

EndSignals::EndSignals() {
  const sigset_t set = endSignals();
  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
  signals_ = Descriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

}  // namespace voxtrel::quillback
