#include "voxtrel/platform/linux/permissions/SandboxMicrophoneAccess.h"

#include <unistd.h>

#include <QDBusObjectPath>
#include <QUuid>
#include <QVariantMap>
#include <utility>

#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/platform/linux/dbus/AsyncCall.h"

namespace voxtrel {

namespace {

constexpr const char* kRequestInterface = "org.freedesktop.portal.Request";
constexpr std::chrono::milliseconds kAcceptTimeout{25000};
constexpr uint kGranted = 0;

/// One request to the portal. Replies once, then deletes itself.
/// Thread: the main thread.  Borrows: Log.
class PortalRequest final : public QObject {
  Q_OBJECT

 public:
  PortalRequest(QDBusConnection bus, Log& log, std::function<void(bool granted)> onReply,
                QObject* parent);

 private:
  Q_SLOT void onResponse(uint response, const QVariantMap& results);
  Q_SLOT void onOwnerChanged(const QString& name, const QString& before, const QString& after);
  QString predictHandle(const QString& token) const;
  void listen(const QString& handle);
  void call(const QString& token);
  void onAccepted(const QDBusPendingReply<QDBusObjectPath>& reply);
  void grantUnguarded(const std::string& reason);
  void finish(bool granted);

  QDBusConnection bus_;
  Logger logger_;
  std::function<void(bool granted)> onReply_;  ///< null once called
  QString handle_;                             ///< the path at which the portal responds
};

PortalRequest::PortalRequest(QDBusConnection bus, Log& log,
                             std::function<void(bool granted)> onReply, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), logger_(log, "main"), onReply_(std::move(onReply)) {
  const QString token = "voxtrel_" + QUuid::createUuid().toString(QUuid::Id128);
  // The response may arrive before the call returns.
  listen(predictHandle(token));
  bus_.connect({}, "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
               QStringList{kPortalService}, {}, this,
               SLOT(onOwnerChanged(QString, QString, QString)));
  call(token);
}

/// The portal makes the path from the caller's name and the token.
QString PortalRequest::predictHandle(const QString& token) const {
  const QString sender = bus_.baseService().mid(1).replace('.', '_');
  return QString("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

/// Accepts any sender: given a name, Qt would block until the bus says who owns it.
void PortalRequest::listen(const QString& handle) {
  handle_ = handle;
  bus_.connect({}, handle, kRequestInterface, "Response", this,
               SLOT(onResponse(uint, QVariantMap)));
}

void PortalRequest::call(const QString& token) {
  QDBusMessage message = QDBusMessage::createMethodCall(
      kPortalService, kPortalObject, "org.freedesktop.portal.Device", "AccessDevice");
  message << static_cast<uint>(::getpid()) << QStringList{"microphone"}
          << QVariantMap{{"handle_token", token}};
  callAsync<QDBusObjectPath>(
      bus_, message, *this, [this](const auto& reply) { onAccepted(reply); }, kAcceptTimeout);
}

void PortalRequest::onAccepted(const QDBusPendingReply<QDBusObjectPath>& reply) {
  if (!reply.isValid()) {
    grantUnguarded(errorText(reply));
  } else if (const QString handle = reply.value().path(); handle != handle_) {
    listen(handle);  // a portal from before tokens
  }
}

void PortalRequest::onResponse(uint response, const QVariantMap&) {
  finish(response == kGranted);
}

void PortalRequest::onOwnerChanged(const QString&, const QString& before, const QString& after) {
  if (!before.isEmpty() && before != after) grantUnguarded("the portal has ended");
}

void PortalRequest::grantUnguarded(const std::string& reason) {
  if (!onReply_) return;
  logger_.info("The desktop does not guard the microphone: " + reason);
  finish(true);
}

void PortalRequest::finish(bool granted) {
  if (const auto onReply = std::exchange(onReply_, nullptr)) {
    deleteLater();
    onReply(granted);
  }
}

}  // namespace

SandboxMicrophoneAccess::SandboxMicrophoneAccess(MainLoop& mainLoop, Log& log, QDBusConnection bus,
                                                 std::string sandboxMarker)
    : mainLoop_(mainLoop),
      log_(log),
      bus_(std::move(bus)),
      sandboxMarker_(std::move(sandboxMarker)) {}

void SandboxMicrophoneAccess::request(std::function<void(bool granted)> onReply) {
  if (::access(sandboxMarker_.c_str(), F_OK) == 0) {
    new PortalRequest(bus_, log_, std::move(onReply), &requests_);
  } else {
    mainLoop_.post([onReply = std::move(onReply)] { onReply(true); });
  }
}

}  // namespace voxtrel

#include "SandboxMicrophoneAccess.moc"
