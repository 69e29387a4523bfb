#include "voxtrel/platform/linux/permissions/MicrophoneRequest.h"

#include <unistd.h>

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingReply>
#include <QUuid>
#include <chrono>
#include <utility>

namespace voxtrel {

namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kRequestInterface = "org.freedesktop.portal.Request";
constexpr std::chrono::milliseconds kAcceptanceLimit{25000};
constexpr uint kGranted = 0;

/// Where the portal will answer: it makes the path from who asks and from the token.
QString predictHandle(const QDBusConnection& bus, const QString& token) {
  const QString sender = bus.baseService().mid(1).replace('.', '_');
  return QString("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

}  // namespace

MicrophoneRequest::MicrophoneRequest(QDBusConnection bus, Log& log,
                                     std::function<void(bool granted)> answer, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), logger_(log, "main"), answer_(std::move(answer)) {
  if (!bus_.isConnected()) {  // Qt would never say that such a call has ended
    QMetaObject::invokeMethod(
        this, [this] { grantUnguarded("there is no session bus"); }, Qt::QueuedConnection);
    return;
  }
  const QString token = "voxtrel_" + QUuid::createUuid().toString(QUuid::Id128);
  // The answer may come before the call returns.
  listen(predictHandle(bus_, token));
  bus_.connect({}, "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
               QStringList{kPortal}, {}, this, SLOT(onOwnerChanged(QString, QString, QString)));
  call(token);
}

/// Without naming the sender: to name it, Qt would wait for the bus to say who that is.
void MicrophoneRequest::listen(const QString& handle) {
  handle_ = handle;
  bus_.connect({}, handle, kRequestInterface, "Response", this,
               SLOT(onResponse(uint, QVariantMap)));
}

void MicrophoneRequest::call(const QString& token) {
  QDBusMessage message = QDBusMessage::createMethodCall(
      kPortal, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Device", "AccessDevice");
  message << static_cast<uint>(::getpid()) << QStringList{"microphone"}
          << QVariantMap{{"handle_token", token}};
  auto* const watcher = new QDBusPendingCallWatcher(
      bus_.asyncCall(message, static_cast<int>(kAcceptanceLimit.count())), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, &MicrophoneRequest::onAccepted);
}

void MicrophoneRequest::onAccepted(QDBusPendingCallWatcher* call) {
  const QDBusPendingReply<QDBusObjectPath> reply = *call;
  if (!reply.isValid()) {
    grantUnguarded(reply.error().message());
  } else if (const QString handle = reply.value().path(); handle != handle_) {
    listen(handle);  // a portal from before tokens
  }
}

void MicrophoneRequest::onResponse(uint response, const QVariantMap&) {
  finish(response == kGranted);
}

void MicrophoneRequest::onOwnerChanged(const QString&, const QString& before,
                                       const QString& after) {
  if (!before.isEmpty() && before != after) grantUnguarded("the portal has ended");
}

void MicrophoneRequest::grantUnguarded(const QString& reason) {
  if (!answer_) return;
  logger_.info("The desktop does not guard the microphone: " + reason.toStdString());
  finish(true);
}

void MicrophoneRequest::finish(bool granted) {
  if (const auto answer = std::exchange(answer_, nullptr)) {
    deleteLater();
    answer(granted);
  }
}

}  // namespace voxtrel
