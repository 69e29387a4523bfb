#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <chrono>
#include <string>
#include <utility>

namespace voxtrel {

/// How long another program gets to reply, unless it has to ask the user.
inline constexpr std::chrono::milliseconds kReplyTimeout{5000};

/// The desktop's portal. Other programs may look at this process until it has replied to a call.
inline constexpr const char* kPortalService = "org.freedesktop.portal.Desktop";
inline constexpr const char* kPortalObject = "/org/freedesktop/portal/desktop";

/// What went wrong with a call, for the log.
std::string errorText(const QDBusPendingCall& failed);

/// Starts a call; it fails where `bus` is not connected. (Qt's own would then never end.)
QDBusPendingCall startCall(const QDBusConnection& bus, const QDBusMessage& call,
                           std::chrono::milliseconds timeout);

/// Sends `call` without waiting. `onReply` is called once, later, with a QDBusPendingReply<Values...>
/// that holds the reply or an error; once `owner` is gone, it is not called any more.
/// Thread: that of `owner`.
template <typename... Values, typename OnReply>
void callAsync(const QDBusConnection& bus, const QDBusMessage& call, QObject& owner,
               OnReply onReply, std::chrono::milliseconds timeout = kReplyTimeout) {
  auto* const watcher = new QDBusPendingCallWatcher(startCall(bus, call, timeout), &owner);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &owner,
                   [watcher, onReply = std::move(onReply)] {
                     watcher->deleteLater();
                     onReply(QDBusPendingReply<Values...>(*watcher));
                   });
}

}  // namespace voxtrel
