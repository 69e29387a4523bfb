#include "voxtrel/platform/linux/dbus/AsyncCall.h"

#include <QCoreApplication>
#include <QDBusError>
#include <memory>

#include "common/posix/Confinement.h"

namespace voxtrel {
namespace {

/// The portal looks at the process that calls it, at its first call only.
void stayOpenUntilReply(const QDBusPendingCall& call) {
  auto* const watcher = new QDBusPendingCallWatcher(call, QCoreApplication::instance());
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                   [watcher, open = std::make_shared<OpenToOthers>()]() mutable {
                     open.reset();
                     watcher->deleteLater();
                   });
}

}  // namespace

std::string errorText(const QDBusPendingCall& failed) {
  return failed.error().message().toStdString();
}

QDBusPendingCall startCall(const QDBusConnection& bus, const QDBusMessage& call,
                           std::chrono::milliseconds timeout) {
  if (bus.isConnected()) {
    QDBusPendingCall pending = bus.asyncCall(call, static_cast<int>(timeout.count()));
    if (call.service() == kPortalService) stayOpenUntilReply(pending);
    return pending;
  }
  const QDBusError error(QDBusError::Disconnected, "there is no session bus");
  return QDBusPendingCall::fromError(error);
}

}  // namespace voxtrel
