#include "voxtrel/platform/linux/dbus/AsyncCall.h"

#include <QDBusError>

namespace voxtrel {

std::string errorText(const QDBusPendingCall& failed) {
  return failed.error().message().toStdString();
}

QDBusPendingCall startCall(const QDBusConnection& bus, const QDBusMessage& call,
                           std::chrono::milliseconds timeout) {
  if (bus.isConnected()) return bus.asyncCall(call, static_cast<int>(timeout.count()));
  const QDBusError error(QDBusError::Disconnected, "there is no session bus");
  return QDBusPendingCall::fromError(error);
}

}  // namespace voxtrel
