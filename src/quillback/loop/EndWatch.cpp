#include "quillback/loop/EndWatch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <utility>

namespace voxtrel::quillback {
namespace {

/// Users and the application expect an end within half a second.
constexpr std::chrono::milliseconds kEndTimeout{350};

/// Waits until a descriptor is readable or the time is over; returns whether one is readable.
template <std::size_t kCount>
bool waitFor(std::array<pollfd, kCount>& files, int milliseconds) {
  for (;;) {
    const int ready = ::poll(files.data(), files.size(), milliseconds);
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

}  // namespace

EndWatch::Parent EndWatch::Parent::find() {
  const pid_t id = ::getppid();
  if (id <= 1) return {};
  FileDescriptor descriptor(static_cast<int>(::syscall(SYS_pidfd_open, id, 0)));
  const bool isUnknown = !descriptor.isOpen() && errno == ESRCH;
  // Another process may have got the id in between, but then we have another parent.
  return {std::move(descriptor), isUnknown || ::getppid() != id};
}

EndWatch::EndWatch(const StopSignals& signals, std::function<void()> onEnd)
    : over_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      onEnd_(std::move(onEnd)),
      thread_([this, fd = signals.descriptor()] { wait(fd); }) {}

EndWatch::~EndWatch() {
  ::eventfd_write(over_.get(), 1);
  thread_.join();
}

void EndWatch::wait(int signals) {
  std::array<pollfd, 3> files{
      {{over_.get(), POLLIN, 0}, {signals, POLLIN, 0}, {parent_.descriptor.get(), POLLIN, 0}}};
  if (!parent_.isGone) waitFor(files, -1);
  if (files[0].revents != 0) return;
  onEnd_();
  std::array<pollfd, 1> over{{{over_.get(), POLLIN, 0}}};
  if (!waitFor(over, static_cast<int>(kEndTimeout.count()))) ::_exit(0);
}

}  // namespace voxtrel::quillback
