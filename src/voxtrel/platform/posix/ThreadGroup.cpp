#include "voxtrel/platform/posix/ThreadGroup.h"

#include <csignal>
#include <initializer_list>
#include <utility>

namespace voxtrel {
namespace {

/// Handlers run on the main thread only; faults of the calling thread still reach it.
void blockSignals() {
  sigset_t signals;
  sigfillset(&signals);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
    sigdelset(&signals, fault);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

ThreadGroup::~ThreadGroup() {
  std::unique_lock lock(mutex_);
  allEnded_.wait(lock, [this] { return running_.empty(); });
  std::thread last = std::move(ended_);
  lock.unlock();
  if (last.joinable()) last.join();
}

tl::expected<void, std::error_code> ThreadGroup::run(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  const auto self = running_.emplace(running_.end());
  try {
    *self = std::thread([this, self, work = std::move(work)]() mutable {
      blockSignals();
      work();
      work = nullptr;  // destroys what it owns before the thread counts as ended
      finish(self);
    });
  } catch (const std::system_error& error) {
    running_.erase(self);
    return tl::unexpected(error.code());
  }
  return {};
}

void ThreadGroup::finish(Threads::iterator self) {
  std::thread previous;
  {
    const std::lock_guard lock(mutex_);
    previous = std::exchange(ended_, std::move(*self));
    running_.erase(self);
    if (running_.empty()) allEnded_.notify_all();
  }
  if (previous.joinable()) previous.join();
}

}  // namespace voxtrel
