#include "voxtrel/platform/linux/session/SingleInstance.h"

#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/linux/application/QtApplication.h"
#include "voxtrel/platform/linux/dbus/AsyncCall.h"

namespace voxtrel {

namespace {

constexpr const char* kObjectPath = "/org/voxtrel/Voxtrel";
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
  bus.registerObject(kObjectPath, this, QDBusConnection::ExportScriptableInvokables);
  QDBusMessage request = QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName");
  request << QString(kBundleIdentifier) << kDoNotQueue;
  nameRequest_ = startCall(bus, request, kTimeout);
}

bool SingleInstance::isFirst() {
  if (!nameRequest_) return true;
  nameRequest_->waitForFinished();
  const QDBusPendingReply<quint32> reply = *nameRequest_;
  if (!reply.isValid()) {
    log_.info("The session bus gave no name: " + errorText(reply));
    return true;
  }
  if (reply.value() != kNameExists) return true;
  activateOther();
  return false;
}

void SingleInstance::activateOther() {
  QDBusMessage activate = QDBusMessage::createMethodCall(kBundleIdentifier, kObjectPath,
                                                         "org.freedesktop.Application", "Activate");
  QVariantMap platformData;
  const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
  if (!token.isEmpty()) platformData.insert("activation-token", token);
  activate << platformData;
  // Blocks, because a message still being sent would be lost with this process.
  QDBusConnection::sessionBus().call(activate, QDBus::Block, static_cast<int>(kTimeout.count()));
}

void SingleInstance::Activate(const QVariantMap& platform_data) {
  if (onReopen_) onReopen_();
  bringForward(platform_data.value("activation-token").toString());
}

void SingleInstance::Open(const QStringList&, const QVariantMap& platform_data) {
  Activate(platform_data);
}

void SingleInstance::ActivateAction(const QString&, const QVariantList&,
                                    const QVariantMap& platform_data) {
  Activate(platform_data);
}

}  // namespace voxtrel
