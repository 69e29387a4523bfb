#include "voxtrel/platform/linux/session/LogindSleepWatch.h"

#include <fcntl.h>
#include <systemd/sd-bus.h>

#include <QTimer>
#include <utility>

namespace voxtrel {

namespace {

constexpr const char* kService = "org.freedesktop.login1";
constexpr const char* kPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";

/// Keeps the connection out of the start-up, so that the tray appears sooner.
constexpr std::chrono::milliseconds kStartUpDelay{100};

constexpr const char* kSleepRule =
    "type='signal',sender='org.freedesktop.login1',path='/org/freedesktop/login1',"
    "interface='org.freedesktop.login1.Manager',member='PrepareForSleep'";
constexpr const char* kOwnerRule =
    "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
    "member='NameOwnerChanged',arg0='org.freedesktop.login1'";

}  // namespace

LogindSleepWatch::LogindSleepWatch(Log& log) : log_(log, "ui") {
  QTimer::singleShot(kStartUpDelay, &context_, [this] { connect(); });
}

LogindSleepWatch::~LogindSleepWatch() = default;

void LogindSleepWatch::connect() {
  bus_ = openSystemBus([this] { reportOnce("the system bus ended the connection"); });
  if (!bus_) {
    reportOnce("there is no system bus");
    return;
  }
  bus_->onSignal(kSleepRule, [this](sd_bus_message& signal) { prepareForSleep(signal); });
  bus_->onSignal(kOwnerRule, [this](sd_bus_message& signal) { ownerChanged(signal); });
  takeLock();
}

void LogindSleepWatch::takeLock() {
  bus_->call(
      {kService, kPath, kManager, "Inhibit"},
      [](sd_bus_message& call) {
        sd_bus_message_append(&call, "ssss", "sleep", "Voxtrel",
                              "Stopping the speech-to-text engine", "delay");
      },
      [this](sd_bus_message& reply) { onLockReply(reply); });
}

/// A login manager that refuses the lock still announces sleep.
void LogindSleepWatch::onLockReply(sd_bus_message& reply) {
  if (isError(reply)) {
    const sd_bus_error* const error = sd_bus_message_get_error(&reply);
    reportOnce(error->message != nullptr ? error->message : error->name);
    return;
  }
  int number = -1;
  if (isGoingToSleep_ || sd_bus_message_read(&reply, "h", &number) <= 0) return;
  // The message closes its own descriptor.
  lock_ = FileDescriptor(fcntl(number, F_DUPFD_CLOEXEC, 0));
}

void LogindSleepWatch::prepareForSleep(sd_bus_message& signal) {
  int isStarting = 0;
  if (sd_bus_message_read(&signal, "b", &isStarting) <= 0) return;
  isGoingToSleep_ = isStarting != 0;
  if (isGoingToSleep_) {
    callAll(onWillSleep_);
    lock_.reset();
  } else {
    if (!lock_.isOpen()) takeLock();
    callAll(onDidWake_);
  }
}

void LogindSleepWatch::ownerChanged(sd_bus_message& signal) {
  const char* name = nullptr;
  const char* before = nullptr;
  const char* after = nullptr;
  if (sd_bus_message_read(&signal, "sss", &name, &before, &after) <= 0) return;
  lock_.reset();  // given by an earlier login manager, it has no effect
  if (*after == '\0') return;
  isGoingToSleep_ = false;
  takeLock();
}

void LogindSleepWatch::reportOnce(const std::string& reason) {
  if (std::exchange(isReported_, true)) return;
  log_.info("Sleep is not noticed or not waited for: " + reason);
}

Subscription LogindSleepWatch::onWillSleep(std::function<void()> handler) {
  return subscribe(onWillSleep_, std::move(handler));
}

Subscription LogindSleepWatch::onDidWake(std::function<void()> handler) {
  return subscribe(onDidWake_, std::move(handler));
}

Subscription LogindSleepWatch::subscribe(const std::shared_ptr<Handlers>& handlers,
                                         std::function<void()> handler) {
  const auto entry = handlers->insert(handlers->end(), std::move(handler));
  return Subscription([handlers = std::weak_ptr(handlers), entry] {
    if (const auto alive = handlers.lock()) alive->erase(entry);
  });
}

/// Over a copy, because a handler may end subscriptions.
void LogindSleepWatch::callAll(const std::shared_ptr<Handlers>& handlers) {
  const auto copies = std::vector(handlers->begin(), handlers->end());
  for (const auto& handler : copies) handler();
}

}  // namespace voxtrel
