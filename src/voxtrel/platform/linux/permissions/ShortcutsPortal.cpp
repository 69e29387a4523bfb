#include "voxtrel/platform/linux/permissions/ShortcutsPortal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <chrono>
#include <utility>

namespace voxtrel {

namespace {

constexpr std::chrono::milliseconds kAnswerLimit{5000};

QDBusMessage versionQuestion() {
  QDBusMessage question = QDBusMessage::createMethodCall("org.freedesktop.portal.Desktop",
                                                         "/org/freedesktop/portal/desktop",
                                                         "org.freedesktop.DBus.Properties", "Get");
  question << QString("org.freedesktop.portal.GlobalShortcuts") << QString("version");
  return question;
}

}  // namespace

void ShortcutsPortal::ask(std::function<void(bool isOffered)> answer) {
  if (!bus_.isConnected()) {  // Qt would never say that such a call has ended
    QMetaObject::invokeMethod(
        &questions_, [answer = std::move(answer)] { answer(false); }, Qt::QueuedConnection);
    return;
  }
  auto* const watcher = new QDBusPendingCallWatcher(
      bus_.asyncCall(versionQuestion(), static_cast<int>(kAnswerLimit.count())), &questions_);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                   [watcher, answer = std::move(answer)] {
                     const QDBusPendingReply<QDBusVariant> reply = *watcher;
                     watcher->deleteLater();
                     answer(reply.isValid() && reply.value().variant().toUInt() > 0);
                   });
}

}  // namespace voxtrel
