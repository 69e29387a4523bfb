#include "voxtrel/platform/linux/session/SingleInstance.h"

#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/linux/application/QtApplication.h"
#include "voxtrel/platform/linux/dbus/AsyncCall.h"
#include "voxtrel/platform/linux/session/RunningInstance.h"

namespace voxtrel {

namespace {

constexpr quint32 kDoNotQueue = 4;  ///< flag of RequestName
constexpr quint32 kNameExists = 3;  ///< its reply if another process has the name
constexpr std::chrono::milliseconds kTimeout{2000};

}  // namespace

SingleInstance::SingleInstance(Log& log) : log_(log, "ui") {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    log_.info("There is no session bus: no tray by D-Bus, no notifications");
    return;
  }
  bus.registerObject(kInstancePath, this, QDBusConnection::ExportScriptableInvokables);
  QDBusMessage request = QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName");
  request << QString(kBundleIdentifier) << kDoNotQueue;
  nameRequest_ = startCall(bus, request, kTimeout);
}

bool SingleInstance::isFirst(StartRequest request) {
  if (!nameRequest_) return true;
  nameRequest_->waitForFinished();
  const QDBusPendingReply<quint32> reply = *nameRequest_;
  if (!reply.isValid()) {
    log_.info("The session bus gave no name: " + errorText(reply));
    return true;
  }
  if (reply.value() != kNameExists) return true;
  static_cast<void>(passOn(request));
  return false;
}

void SingleInstance::take(StartRequest request, const QString& activationToken) {
  const bool showsWindows = request == StartRequest::open || request == StartRequest::settings;
  if (onRequest_) onRequest_(request);
  if (showsWindows) bringForward(activationToken);
}

void SingleInstance::Activate(const QVariantMap& platform_data) {
  take(StartRequest::open, platform_data.value("activation-token").toString());
}

void SingleInstance::Open(const QStringList&, const QVariantMap& platform_data) {
  Activate(platform_data);
}

void SingleInstance::ActivateAction(const QString& action_name, const QVariantList&,
                                    const QVariantMap& platform_data) {
  const auto request = requestOf(action_name);
  if (!request) return Activate(platform_data);
  QMetaObject::invokeMethod(
      this,
      [this, request = *request, token = platform_data.value("activation-token").toString()] {
        take(request, token);
      },
      Qt::QueuedConnection);
}

}  // namespace voxtrel
