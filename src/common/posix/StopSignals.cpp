#include "common/posix/StopSignals.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>

#include "common/base/Fatal.h"

namespace voxtrel {
namespace {

std::atomic<int> requestsWriteEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler reads it");

/// A full pipe already holds more requests than anyone needs.
void request(int signal) {
  const int errnoBefore = errno;
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const ssize_t written = ::write(requestsWriteEnd.load(), &byte, sizeof byte);
  errno = errnoBefore;
}

bool isIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void makeNonBlocking(const FileDescriptor& descriptor) {
  const int flags = ::fcntl(descriptor.get(), F_GETFL);
  ::fcntl(descriptor.get(), F_SETFL, flags | O_NONBLOCK);
}

Pipe openRequests() {
  auto pipe = Pipe::open();
  if (!pipe) fatalError("no pipe for the signals that stop the program");
  makeNonBlocking(pipe->readEnd);
  makeNonBlocking(pipe->writeEnd);
  return std::move(*pipe);
}

}  // namespace

StopSignals::StopSignals(InheritedIgnores inherited, std::initializer_list<int> alsoIgnored)
    : requests_(openRequests()) {
  requestsWriteEnd = requests_.writeEnd.get();
  for (const int signal : alsoIgnored) handle(signal, SIG_IGN);
  sigset_t unblocked;
  sigemptyset(&unblocked);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    const bool canStayIgnored = inherited == InheritedIgnores::keep && signal != SIGTERM;
    if (canStayIgnored && isIgnored(signal)) continue;
    handle(signal, request);
    sigaddset(&unblocked, signal);
  }
  pthread_sigmask(SIG_UNBLOCK, &unblocked, &maskBefore_);
}

StopSignals::~StopSignals() {
  pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
  for (const auto& [signal, action] : actionsBefore_) ::sigaction(signal, &action, nullptr);
  requestsWriteEnd = -1;
}

void StopSignals::handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  ::sigaction(signal, &action, &actionsBefore_.emplace_back(signal, action).second);
}

bool StopSignals::waitFor(std::chrono::milliseconds limit) const {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + limit;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    const auto timeout = std::max(left, std::chrono::milliseconds(0));
    pollfd requests{descriptor(), POLLIN, 0};
    const int ready = ::poll(&requests, 1, static_cast<int>(timeout.count()));
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

// NOLINTNEXTLINE(readability-make-member-function-const): it takes
std::optional<int> StopSignals::take() {
  unsigned char signal = 0;
  const ssize_t count = ::read(descriptor(), &signal, sizeof signal);
  if (count != static_cast<ssize_t>(sizeof signal)) return {};
  return signal;
}

}  // namespace voxtrel
