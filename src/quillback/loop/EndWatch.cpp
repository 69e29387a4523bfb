#include "quillback/loop/EndWatch.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <utility>

namespace voxtrel::quillback {
namespace {

/// People and programs expect an end within half a second.
constexpr std::chrono::milliseconds kPatience{350};

/// Waits until one of the descriptors is readable or the time is over; whether one is.
template <std::size_t kCount>
bool waitFor(std::array<pollfd, kCount>& files, int milliseconds) {
  for (;;) {
    const int ready = ::poll(files.data(), files.size(), milliseconds);
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

}  // namespace

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
      {{over_.get(), POLLIN, 0}, {signals, POLLIN, 0}, {parent_.fd(), POLLIN, 0}}};
  if (!parent_.isGone()) waitFor(files, -1);
  if (files[0].revents != 0) return;
  onEnd_();
  std::array<pollfd, 1> over{{{over_.get(), POLLIN, 0}}};
  if (!waitFor(over, static_cast<int>(kPatience.count()))) ::_exit(0);
}

}  // namespace voxtrel::quillback
