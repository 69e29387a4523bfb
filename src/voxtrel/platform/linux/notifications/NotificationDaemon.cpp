#include "voxtrel/platform/linux/notifications/NotificationDaemon.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <chrono>
#include <utility>

#include "voxtrel/platform/Desktop.h"

namespace voxtrel {

namespace {

constexpr const char* kName = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr std::chrono::milliseconds kAnswerLimit{5000};

QDBusMessage methodCall(const char* method, const QString& service = kName) {
  return QDBusMessage::createMethodCall(service, kPath, kName, method);
}

/// Calls `onAnswer` with the watcher once the answer or the failure is there, unless `owner` is
/// gone.
template <typename OnAnswer>
void call(const QDBusMessage& message, QObject* owner, OnAnswer onAnswer) {
  auto* const watcher = new QDBusPendingCallWatcher(
      QDBusConnection::sessionBus().asyncCall(message, static_cast<int>(kAnswerLimit.count())),
      owner);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner,
                   [watcher, onAnswer = std::move(onAnswer)] {
                     watcher->deleteLater();
                     onAnswer(*watcher);
                   });
}

}  // namespace

NotificationDaemon::NotificationDaemon(Events events) : events_(std::move(events)) {}

/// Without naming the sender: to name it, Qt would wait for the bus to say who that is.
void NotificationDaemon::listen() {
  if (std::exchange(isListening_, true)) return;
  QDBusConnection bus = QDBusConnection::sessionBus();
  bus.connect({}, kPath, kName, "ActionInvoked", this, SLOT(onActionInvoked(quint32, QString)));
  bus.connect({}, kPath, kName, "ActivationToken", this, SLOT(onActivationToken(quint32, QString)));
  bus.connect({}, kPath, kName, "NotificationClosed", this,
              SLOT(onNotificationClosed(quint32, quint32)));
}

void NotificationDaemon::queryCapabilities(
    std::function<void(std::optional<NotificationCapabilities>)> answer) {
  listen();
  call(methodCall("GetCapabilities"), this,
       [answer = std::move(answer)](const QDBusPendingCall& pending) {
         const QDBusPendingReply<QStringList> reply = pending;
         answer(reply.isValid() ? std::optional(NotificationCapabilities::parse(reply.value()))
                                : std::nullopt);
       });
}

void NotificationDaemon::notify(const NotificationRequest& request, quint32 replaces,
                                std::function<void(std::optional<ShownNotification>)> answer) {
  constexpr int kDaemonChoosesTimeout = -1;
  QDBusMessage message = methodCall("Notify");
  message << QString("Voxtrel") << replaces << QString(kBundleIdentifier) << request.summary
          << request.body << request.actions << request.hints << kDaemonChoosesTimeout;
  call(message, this, [answer = std::move(answer)](const QDBusPendingCall& pending) {
    const QDBusPendingReply<quint32> reply = pending;
    answer(reply.isValid()
               ? std::optional(ShownNotification{reply.reply().service(), reply.value()})
               : std::nullopt);
  });
}

void NotificationDaemon::close(const ShownNotification& shown) {
  QDBusMessage message = methodCall("CloseNotification", shown.daemon);
  message << shown.number;
  QDBusConnection::sessionBus().send(message);
}

void NotificationDaemon::onActivationToken(quint32 number, const QString& token) {
  tokenOwner_ = {message().service(), number};
  token_ = token;
}

void NotificationDaemon::onActionInvoked(quint32 number, const QString& action) {
  const ShownNotification shown{message().service(), number};
  const QString token = shown == tokenOwner_ ? std::exchange(token_, QString()) : QString();
  events_.actionInvoked(shown, action, token);
}

void NotificationDaemon::onNotificationClosed(quint32 number, quint32) {
  events_.closed({message().service(), number});
}

}  // namespace voxtrel
