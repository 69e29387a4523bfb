#include "voxtrel/platform/linux/notifications/NotificationDaemon.h"

#include <utility>

#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/linux/dbus/AsyncCall.h"

namespace voxtrel {

namespace {

constexpr const char* kName = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";

QDBusMessage methodCall(const char* method, const QString& service = kName) {
  return QDBusMessage::createMethodCall(service, kPath, kName, method);
}

}  // namespace

NotificationDaemon::NotificationDaemon(Events events) : events_(std::move(events)) {}

/// Accepts any sender: given a name, Qt would block until the bus says who owns it.
void NotificationDaemon::listen() {
  if (std::exchange(isListening_, true)) return;
  QDBusConnection bus = QDBusConnection::sessionBus();
  bus.connect({}, kPath, kName, "ActionInvoked", this, SLOT(onActionInvoked(quint32, QString)));
  bus.connect({}, kPath, kName, "ActivationToken", this, SLOT(onActivationToken(quint32, QString)));
  bus.connect({}, kPath, kName, "NotificationClosed", this,
              SLOT(onNotificationClosed(quint32, quint32)));
}

void NotificationDaemon::queryCapabilities(
    std::function<void(std::optional<NotificationCapabilities>)> onReply) {
  listen();
  callAsync<QStringList>(
      QDBusConnection::sessionBus(), methodCall("GetCapabilities"), *this,
      [this, onReply = std::move(onReply)](const QDBusPendingReply<QStringList>& reply) {
        if (!reply.isValid()) return onReply(std::nullopt);
        queryOwner([onReply, capabilities = NotificationCapabilities::parse(reply.value())] {
          onReply(capabilities);
        });
      });
}

void NotificationDaemon::queryOwner(std::function<void()> then) {
  QDBusMessage message = QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner");
  message << QString(kName);
  callAsync<QString>(QDBusConnection::sessionBus(), message, *this,
                     [this, then = std::move(then)](const QDBusPendingReply<QString>& reply) {
                       owner_ = reply.isValid() ? reply.value() : QString();
                       then();
                     });
}

void NotificationDaemon::notify(const NotificationRequest& request, quint32 replaces,
                                std::function<void(std::optional<ShownNotification>)> onReply) {
  constexpr int kDaemonChoosesTimeout = -1;
  QDBusMessage message = methodCall("Notify");
  message << QString("Voxtrel") << replaces << QString(kBundleIdentifier) << request.summary
          << request.body << request.actions << request.hints << kDaemonChoosesTimeout;
  callAsync<quint32>(
      QDBusConnection::sessionBus(), message, *this,
      [owner = owner_, onReply = std::move(onReply)](const QDBusPendingReply<quint32>& reply) {
        onReply(reply.isValid() ? std::optional(ShownNotification{owner, reply.value()})
                                : std::nullopt);
      });
}

void NotificationDaemon::close(const ShownNotification& shown) {
  QDBusMessage message = methodCall("CloseNotification", shown.daemon);
  message << shown.id;
  QDBusConnection::sessionBus().send(message);
}

void NotificationDaemon::onActivationToken(quint32 id, const QString& token) {
  tokenOwner_ = {message().service(), id};
  token_ = token;
}

void NotificationDaemon::onActionInvoked(quint32 id, const QString& action) {
  const ShownNotification shown{message().service(), id};
  const QString token = shown == tokenOwner_ ? std::exchange(token_, QString()) : QString();
  events_.actionInvoked(shown, action, token);
}

void NotificationDaemon::onNotificationClosed(quint32 id, quint32) {
  events_.closed({message().service(), id});
}

}  // namespace voxtrel
