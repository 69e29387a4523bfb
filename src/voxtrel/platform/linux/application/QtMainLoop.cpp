#include "voxtrel/platform/linux/application/QtMainLoop.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace voxtrel {

namespace {

using std::chrono::steady_clock;

/// How long a batch of posted tasks may keep the main thread.
constexpr std::chrono::milliseconds kBatchLimit{4};

class WakeReceiver final : public QObject {
 public:
  explicit WakeReceiver(std::function<void()> onWake) : onWake_(std::move(onWake)) {}

 protected:
  void customEvent(QEvent*) override { onWake_(); }

 private:
  std::function<void()> onWake_;
};

std::unique_ptr<QEvent> newWakeUp() {
  return std::make_unique<QEvent>(QEvent::User);
}

/// A timer that calls its task without a signal and slot in between.
class TaskTimer final : public QObject {
 public:
  TaskTimer(std::chrono::milliseconds interval, bool repeats, QtMainLoop::Task task,
            QObject* parent)
      : QObject(parent), task_(std::move(task)), repeats_(repeats) {
    timer_.start(static_cast<int>(interval.count()), repeats ? Qt::CoarseTimer : Qt::PreciseTimer,
                 this);
  }

  /// May be called by its own task.
  void end() {
    timer_.stop();
    deleteLater();
  }

 protected:
  void timerEvent(QTimerEvent*) override {
    if (!repeats_) timer_.stop();
    task_();
  }

 private:
  QtMainLoop::Task task_;
  bool repeats_;
  QBasicTimer timer_;
};

}  // namespace

QtMainLoop::QtMainLoop()
    : wakeUp_(newWakeUp()), receiver_(std::make_unique<WakeReceiver>([this] { runBatch(); })) {}

QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Task task) {
  QEvent* wakeUp = nullptr;
  {
    const std::lock_guard lock(mutex_);
    queue_.push_back(std::move(task));
    wakeUp = wakeUp_.release();
  }
  // After unlocking: the main thread takes the lock as soon as it wakes up.
  if (wakeUp != nullptr) QCoreApplication::postEvent(receiver_.get(), wakeUp);
}

void QtMainLoop::runBatch() {
  const auto deadline = steady_clock::now() + kBatchLimit;
  std::unique_lock lock(mutex_);
  wakeUp_ = newWakeUp();
  // A task may run a nested event loop; this wake-up runs the rest of the queue there.
  if (queue_.size() > 1) QCoreApplication::postEvent(receiver_.get(), wakeUp_.release());
  while (!queue_.empty()) {
    Task task = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    task();
    task = nullptr;
    const bool outOfTime = steady_clock::now() >= deadline;
    lock.lock();
    if (outOfTime) break;
  }
  if (!queue_.empty() && wakeUp_) {
    QCoreApplication::postEvent(receiver_.get(), wakeUp_.release());
  }
}

void QtMainLoop::postAfter(std::chrono::milliseconds delay, Task task) {
  QTimer::singleShot(delay, receiver_.get(), std::move(task));
}

Subscription QtMainLoop::at(Clock::TimePoint time, Task task) {
  const auto delay = std::chrono::ceil<std::chrono::milliseconds>(time - steady_clock::now());
  return startTimer(std::max(delay, std::chrono::milliseconds(0)), false, std::move(task));
}

Subscription QtMainLoop::every(std::chrono::milliseconds interval, Task task) {
  return startTimer(interval, true, std::move(task));
}

Subscription QtMainLoop::startTimer(std::chrono::milliseconds interval, bool repeats, Task task) {
  const QPointer<TaskTimer> timer(
      new TaskTimer(interval, repeats, std::move(task), receiver_.get()));
  return Subscription([timer] {
    if (timer) timer->end();
  });
}

}  // namespace voxtrel
