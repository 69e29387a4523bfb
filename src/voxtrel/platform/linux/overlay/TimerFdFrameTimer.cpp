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

// Most late ticks to make up for; after a longer stall the rest is dropped.
constexpr std::uint64_t kMaxTicksAtOnce = 6;

timespec toTimespec(std::chrono::nanoseconds duration) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
  return {.tv_sec = seconds.count(), .tv_nsec = (duration - seconds).count()};
}

FileDescriptor startedTimer(std::chrono::nanoseconds interval) {
  FileDescriptor timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
  const itimerspec schedule{.it_interval = toTimespec(interval), .it_value = toTimespec(interval)};
  ::timerfd_settime(timer.get(), 0, &schedule, nullptr);
  return timer;
}

/// One running timer.
/// Thread: the main thread.  Owns: the timer's descriptor.
class Ticker {
 public:
  using Task = std::function<void()>;

  Ticker(std::chrono::nanoseconds interval, Task task)
      : timer_(startedTimer(interval)),
        task_(std::make_shared<const Task>(std::move(task))),
        notifier_(new QSocketNotifier(timer_.get(), QSocketNotifier::Read)) {
    QObject::connect(notifier_, &QSocketNotifier::activated, notifier_, [this] { tick(); });
  }
  Ticker(const Ticker&) = delete;
  Ticker& operator=(const Ticker&) = delete;
  ~Ticker() {
    notifier_->setEnabled(false);
    notifier_->deleteLater();  // we may be inside its signal
  }

 private:
  void tick() {
    std::uint64_t expirations = 0;  // above 1 if we are late
    if (::read(timer_.get(), &expirations, sizeof expirations) != sizeof expirations) return;
    // The task may destroy this object.
    const auto alive = std::weak_ptr(alive_);
    const auto task = task_;
    for (auto due = std::min(expirations, kMaxTicksAtOnce); due > 0 && !alive.expired(); --due) {
      (*task)();
    }
  }

  FileDescriptor timer_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>();
  std::shared_ptr<const Task> task_;
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
