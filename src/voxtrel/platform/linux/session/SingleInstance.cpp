#include "voxtrel/platform/linux/session/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>

#include "voxtrel/platform/Desktop.h"

namespace voxtrel {

namespace {

constexpr const char* kObjectPath = "/org/voxtrel/Voxtrel";
constexpr quint32 kDoNotQueue = 4;  ///< flag of RequestName
constexpr quint32 kNameExists = 3;  ///< its answer when another has the name
constexpr int kAnswerLimitMs = 2000;

}  // namespace

SingleInstance::SingleInstance(Log& log) : log_(log, "ui") {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    log_.info("There is no session bus: no tray by D-Bus, no notifications");
    return;
  }
  bus.registerVirtualObject(kObjectPath, &object_);
  QDBusMessage request = QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName");
  request << QString(kBundleIdentifier) << kDoNotQueue;
  nameRequest_ = bus.asyncCall(request, kAnswerLimitMs);
}

bool SingleInstance::isFirst() {
  if (!nameRequest_) return true;
  nameRequest_->waitForFinished();
  const QDBusPendingReply<quint32> reply = *nameRequest_;
  if (!reply.isValid()) {
    log_.info("The session bus gave no name: " + reply.error().message().toStdString());
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
  // The answer matters little, but what was only sent would be lost with this process.
  QDBusConnection::sessionBus().call(activate, QDBus::Block, kAnswerLimitMs);
}

}  // namespace voxtrel
