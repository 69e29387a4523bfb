#pragma once

#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <functional>
#include <optional>

#include "voxtrel/platform/linux/notifications/NotificationRequest.h"

namespace voxtrel {

/// A notification on the user's screen. Its id is only unique per daemon, and a daemon can be
/// replaced while we run.
struct ShownNotification {
  QString daemon;  ///< its unique name on the bus
  quint32 id = 0;

  friend bool operator==(const ShownNotification&, const ShownNotification&) = default;
};

/// The desktop's notification daemon, over D-Bus. Calls never block and time out after 5 seconds.
/// Thread: the main thread.
/// Fails by: `nullopt` as the reply.
class NotificationDaemon final : public QObject, protected QDBusContext {
  Q_OBJECT

 public:
  struct Events {
    std::function<void(const ShownNotification&, const QString& action, const QString& token)>
        actionInvoked;
    std::function<void(const ShownNotification&)> closed;
  };

  explicit NotificationDaemon(Events events);

  void queryCapabilities(std::function<void(std::optional<NotificationCapabilities>)> onReply);
  /// `replaces`: id of the notification to replace, or 0.
  void notify(const NotificationRequest& request, quint32 replaces,
              std::function<void(std::optional<ShownNotification>)> onReply);
  void close(const ShownNotification& shown);

 private:
  Q_SLOT void onActionInvoked(quint32 id, const QString& action);
  Q_SLOT void onActivationToken(quint32 id, const QString& token);
  Q_SLOT void onNotificationClosed(quint32 id, quint32 reason);
  void listen();
  void queryOwner(std::function<void()> then);

  Events events_;
  /// The daemon's unique name, the sender of its signals. Asked for, because Qt 6.8's replies lack theirs.
  QString owner_;
  bool isListening_ = false;
  ShownNotification tokenOwner_;
  QString token_;  ///< permission to take the focus; sent just before the action it belongs to
};

}  // namespace voxtrel
