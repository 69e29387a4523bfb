#include "voxtrel/platform/linux/overlay/TimerFdFrameTimer.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

#include "common/posix/FileDescriptor.h"

namespace voxtrel {
namespace {

// After a longer stall there is no point in showing every frame of it.
constexpr std::uint64_t kMostAtOnce = 6;

timespec toTimespec(std::chrono::nanoseconds duration) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
  return {.tv_sec = seconds.count(), .tv_nsec = (duration - seconds).count()};
}

FileDescriptor startedTimer(std::chrono::nanoseconds interval) {
  FileDescriptor timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
  const itimerspec schedule{.it_interval = toTimespec(interval), .it_value = toTimespec(interval)};
  ::timerfd_settime(timer.number(), 0, &schedule, nullptr);
  return timer;
}

/// Thread: the main thread.  Owns: the timer's descriptor.
class Ticker {
 public:
  Ticker(std::chrono::nanoseconds interval, std::function<void()> task)
      : timer_(startedTimer(interval)),
        task_(std::move(task)),
        notifier_(new QSocketNotifier(timer_.number(), QSocketNotifier::Read)) {
    QObject::connect(notifier_, &QSocketNotifier::activated, notifier_, [this] { tick(); });
  }
  Ticker(const Ticker&) = delete;
  Ticker& operator=(const Ticker&) = delete;
  ~Ticker() {
    notifier_->setEnabled(false);
    notifier_->deleteLater();  // the task may be what ends us
  }

 private:
  void tick() {
    std::uint64_t expirations = 0;  // more than one: we are late
    if (::read(timer_.number(), &expirations, sizeof expirations) != sizeof expirations) return;
    const auto alive = std::weak_ptr(self_);
    const auto task = task_;
    for (auto due = std::min(expirations, kMostAtOnce); due > 0 && !alive.expired(); --due) task();
  }

  FileDescriptor timer_;
  std::shared_ptr<bool> self_ = std::make_shared<bool>();  // for `tick`, whose task may end us
  std::function<void()> task_;
  QSocketNotifier* notifier_;
};

}  // namespace

Subscription TimerFdFrameTimer::everyFrame(std::chrono::duration<double> interval,
                                           std::function<void()> task) {
  auto ticker = std::make_shared<Ticker>(std::chrono::round<std::chrono::nanoseconds>(interval),
                                         std::move(task));
  return Subscription([ticker]() mutable { ticker.reset(); });
}

}  // namespace voxtrel
