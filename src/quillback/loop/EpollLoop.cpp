#include "quillback/loop/EpollLoop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace voxtrel::quillback {
namespace {

constexpr std::uint64_t kWakeUpId = 0;
constexpr std::uint64_t kAlarmId = 1;
constexpr std::uint64_t kFirstFreeId = 2;

FileDescriptor needed(int fd) {
  if (fd < 0) {
    std::perror("quillback: no descriptor for the loop");
    std::abort();
  }
  return FileDescriptor(fd);
}

/// Reads the counter that made `fd` readable.
void drain(int fd) {
  std::uint64_t count = 0;
  while (::read(fd, &count, sizeof count) < 0 && errno == EINTR) {
  }
}

}  // namespace

class EpollLoop::TimerHandle final : public Loop::Timer {
 public:
  TimerHandle(EpollLoop& loop, TimerKey key) : loop_(loop), key_(std::move(key)) {}
  TimerHandle(const TimerHandle&) = delete;
  TimerHandle& operator=(const TimerHandle&) = delete;
  // The alarm stays set as long as there are other timers: one that finds nothing due does nothing.
  ~TimerHandle() override { loop_.timers_.erase(key_); }

 private:
  EpollLoop& loop_;
  const TimerKey key_;
};

class EpollLoop::WatchHandle final : public Loop::Watch {
 public:
  WatchHandle(EpollLoop& loop, int fd, std::uint64_t id) : loop_(loop), fd_(fd), id_(id) {}
  WatchHandle(const WatchHandle&) = delete;
  WatchHandle& operator=(const WatchHandle&) = delete;
  ~WatchHandle() override {
    ::epoll_ctl(loop_.epoll_.get(), EPOLL_CTL_DEL, fd_, nullptr);
    loop_.watches_.erase(id_);
  }

 private:
  EpollLoop& loop_;
  const int fd_;
  const std::uint64_t id_;
};

EpollLoop::EpollLoop()
    : epoll_(needed(::epoll_create1(EPOLL_CLOEXEC))),
      wakeUp_(needed(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))),
      alarm_(needed(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))),
      nextId_(kFirstFreeId) {
  add(wakeUp_.get(), kWakeUpId);
  add(alarm_.get(), kAlarmId);
}

EpollLoop::~EpollLoop() = default;

void EpollLoop::post(Task task) {
  bool wasEmpty = false;
  {
    const std::lock_guard lock(mutex_);
    wasEmpty = posted_.empty();
    posted_.push_back(std::move(task));
  }
  if (wasEmpty) ::eventfd_write(wakeUp_.get(), 1);
}

std::unique_ptr<Loop::Timer> EpollLoop::after(std::chrono::milliseconds delay, Task task) {
  const TimerKey key{now() + delay, nextId_++};
  timers_.emplace(key, std::move(task));
  armTimers();
  return std::make_unique<TimerHandle>(*this, key);
}

Loop::TimePoint EpollLoop::now() const {
  return std::chrono::steady_clock::now();
}

std::unique_ptr<Loop::Watch> EpollLoop::watch(int descriptor, Task onReadable) {
  const std::uint64_t id = nextId_++;
  watches_.emplace(id, std::make_shared<Task>(std::move(onReadable)));
  add(descriptor, id);
  return std::make_unique<WatchHandle>(*this, descriptor, id);
}

void EpollLoop::run() {
  std::array<epoll_event, 16> events{};
  while (!stopped_) {
    if (timers_.empty()) stopAlarm();
    const int count =
        ::epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()), -1);
    for (int i = 0; i < count && !stopped_; ++i) {
      const std::uint64_t id = events[static_cast<std::size_t>(i)].data.u64;
      if (id == kWakeUpId) {
        runPosted();
      } else if (id == kAlarmId) {
        runTimers();
      } else {
        runWatch(id);
      }
    }
  }
}

void EpollLoop::stop() {
  stopped_ = true;
  ::eventfd_write(wakeUp_.get(), 1);
}

void EpollLoop::runPosted() {
  drain(wakeUp_.get());
  std::vector<Task> tasks;
  {
    const std::lock_guard lock(mutex_);
    tasks.swap(posted_);
  }
  for (const Task& task : tasks) {
    if (stopped_) return;
    task();
  }
}

void EpollLoop::runTimers() {
  drain(alarm_.get());
  alarmAt_ = TimePoint::max();
  while (!stopped_ && !timers_.empty() && timers_.begin()->first.first <= now()) {
    const auto due = timers_.extract(timers_.begin());
    due.mapped()();
  }
  armTimers();
}

void EpollLoop::runWatch(std::uint64_t id) {
  const auto found = watches_.find(id);
  if (found == watches_.end()) return;  // another task of this round ended the watch
  const std::shared_ptr<Task> task = found->second;
  (*task)();
}

void EpollLoop::armTimers() {
  if (timers_.empty() || timers_.begin()->first.first >= alarmAt_) return;
  alarmAt_ = timers_.begin()->first.first;
  const auto since = alarmAt_.time_since_epoch();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since);
  itimerspec spec{};
  spec.it_value.tv_sec = seconds.count();
  spec.it_value.tv_nsec = std::chrono::nanoseconds(since - seconds).count();
  ::timerfd_settime(alarm_.get(), TFD_TIMER_ABSTIME, &spec, nullptr);
}

/// Set for a timer that is gone, it would wake an idle process.
void EpollLoop::stopAlarm() {
  if (alarmAt_ == TimePoint::max()) return;
  alarmAt_ = TimePoint::max();
  const itimerspec never{};
  ::timerfd_settime(alarm_.get(), 0, &never, nullptr);
}

void EpollLoop::add(int fd, std::uint64_t id) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = id;
  ::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event);
}

}  // namespace voxtrel::quillback
