#include "platform/linux/QtMainLoop.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <utility>

namespace voxtrel {

namespace {

using std::chrono::steady_clock;

/// How long posted tasks may hold the main thread before everything else gets its turn.
constexpr std::chrono::milliseconds kBatchLimit{4};

class WakeReceiver final : public QObject {
 public:
  explicit WakeReceiver(std::function<void()> onWake) : onWake_(std::move(onWake)) {}

 protected:
  void customEvent(QEvent*) override { onWake_(); }

 private:
  std::function<void()> onWake_;
};

/// A timer without the signal and slot between it and its task.
class RepeatingTimer final : public QObject {
 public:
  RepeatingTimer(std::chrono::milliseconds interval, QtMainLoop::Task task, QObject* parent)
      : QObject(parent), task_(std::move(task)), id_(startTimer(interval, Qt::CoarseTimer)) {}

  /// It may be its own task that ends it.
  void end() {
    killTimer(id_);
    deleteLater();
  }

 protected:
  void timerEvent(QTimerEvent*) override { task_(); }

 private:
  QtMainLoop::Task task_;
  int id_;
};

}  // namespace

QtMainLoop::QtMainLoop() : receiver_(std::make_unique<WakeReceiver>([this] { runBatch(); })) {}

QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Task task) {
  const std::lock_guard lock(mutex_);
  queue_.push_back(std::move(task));
  wake();
}

/// Called with the mutex held: whoever receives the wake-up has then seen everything before it.
void QtMainLoop::wake() {
  if (std::exchange(wakePending_, true)) return;
  QCoreApplication::postEvent(receiver_.get(), new QEvent(QEvent::User));
}

void QtMainLoop::runBatch() {
  const auto deadline = steady_clock::now() + kBatchLimit;
  std::unique_lock lock(mutex_);
  wakePending_ = false;
  // A task may run an event loop of its own; the wake-up lets the rest of the queue run there.
  if (queue_.size() > 1) wake();
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
  if (!queue_.empty()) wake();
}

void QtMainLoop::postAfter(std::chrono::milliseconds delay, Task task) {
  QTimer::singleShot(delay, receiver_.get(), std::move(task));
}

Subscription QtMainLoop::every(std::chrono::milliseconds interval, Task task) {
  const QPointer<RepeatingTimer> timer(
      new RepeatingTimer(interval, std::move(task), receiver_.get()));
  return Subscription([timer] {
    if (timer) timer->end();
  });
}

}  // namespace voxtrel
