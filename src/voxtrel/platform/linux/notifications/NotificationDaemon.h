#pragma once

#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <functional>
#include <optional>

#include "voxtrel/platform/linux/notifications/NotificationRequest.h"

namespace voxtrel {

/// A notification on the user's screen. The daemon's number alone would be mistaken for another's
/// after the daemon has been replaced.
struct ShownNotification {
  QString daemon;  ///< its unique name on the bus
  quint32 number = 0;

  friend bool operator==(const ShownNotification&, const ShownNotification&) = default;
};

/// The desktop's notification daemon, spoken to over D-Bus. No call waits; an answer that takes
/// more than five seconds counts as none.
/// Thread: the main thread.  Fails by: answering nothing (`nullopt`).
class NotificationDaemon final : public QObject, protected QDBusContext {
  Q_OBJECT

 public:
  struct Events {
    std::function<void(const ShownNotification&, const QString& action, const QString& token)>
        actionInvoked;
    std::function<void(const ShownNotification&)> closed;
  };

  explicit NotificationDaemon(Events events);

  void queryCapabilities(std::function<void(std::optional<NotificationCapabilities>)> answer);
  /// `replaces`: the number of the notification to replace, or 0.
  void notify(const NotificationRequest& request, quint32 replaces,
              std::function<void(std::optional<ShownNotification>)> answer);
  void close(const ShownNotification& shown);

 private:
  Q_SLOT void onActionInvoked(quint32 number, const QString& action);
  Q_SLOT void onActivationToken(quint32 number, const QString& token);
  Q_SLOT void onNotificationClosed(quint32 number, quint32 reason);
  void listen();

  Events events_;
  bool isListening_ = false;
  ShownNotification tokenOwner_;
  QString token_;  ///< leave to come forward, sent just before the action it belongs to
};

}  // namespace voxtrel
