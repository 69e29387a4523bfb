#pragma once

#include <deque>
#include <optional>

#include "voxtrel/platform/Notifications.h"
#include "voxtrel/platform/linux/notifications/NotificationDaemon.h"

namespace voxtrel {

/// Notifications by the desktop's own daemon. The daemon has five seconds to show one; while it is
/// asked for its capabilities, only the newest ones are kept.
/// Thread: `post` from any, the others from the main thread.
/// Owns: what was posted until it is closed.  Fails by: dropping the notification.
class FreedesktopNotifications final : public Notifications {
 public:
  FreedesktopNotifications();

  void setCategories(std::vector<NotificationCategory> categories) override;
  void setDelegate(std::weak_ptr<NotificationDelegate> delegate) override;
  void requestAuthorization() override;
  void post(UserNotification notification) override;

 private:
  struct Shown {
    ShownNotification where;
    std::string identifier;
    std::string categoryIdentifier;
  };

  void enqueue(UserNotification notification);
  void sendWaiting(std::optional<NotificationCapabilities> capabilities);
  void present(const UserNotification& notification, NotificationCapabilities capabilities);
  void send(const UserNotification& notification, NotificationCapabilities capabilities,
            PresentationOptions options);
  void remember(Shown shown);
  void forget(const ShownNotification& where);
  void actionInvoked(const ShownNotification& where, const QString& action, const QString& token);
  void respond(const Shown& shown, const std::string& action);
  const NotificationCategory* findCategory(const std::string& identifier) const;
  const NotificationAction* findAction(const Shown& shown, const std::string& identifier) const;

  std::vector<NotificationCategory> categories_;
  std::weak_ptr<NotificationDelegate> delegate_;
  std::deque<UserNotification> waiting_;  ///< for the daemon's capabilities
  std::deque<Shown> shown_;
  QObject context_;  ///< receives `post` on the main thread
  NotificationDaemon daemon_;
};

}  // namespace voxtrel
