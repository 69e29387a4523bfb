#pragma once

#import <Foundation/Foundation.h>
#import <UserNotifications/UserNotifications.h>

#include "voxtrel/platform/Notifications.h"

@class VXNotificationDelegate;

namespace voxtrel {

class MainLoop;

/// Notifications of the system's center. The delegate is called on the main thread, whatever thread
/// the center uses.
/// Thread: `post` from any, the others from the main thread.  Owns: what the center reports to.
/// Borrows: the main loop.
/// Fails by: dropping a notification that the center refuses.
class UserNotificationCenter final : public Notifications {
 public:
  /// `center`: nil where the process is not part of a bundle, which the system requires; nothing is
  /// shown then.
  UserNotificationCenter(UNUserNotificationCenter* center, MainLoop& mainLoop);
  UserNotificationCenter(const UserNotificationCenter&) = delete;
  UserNotificationCenter& operator=(const UserNotificationCenter&) = delete;
  ~UserNotificationCenter() override;

  /// The center of this application, or nil.
  static UNUserNotificationCenter* centerOfThisBundle();

  void setCategories(std::vector<NotificationCategory> categories) override;
  void setDelegate(std::weak_ptr<NotificationDelegate> delegate) override;
  void requestAuthorization() override;
  void post(UserNotification notification) override;

 private:
  UNUserNotificationCenter* const center_;
  VXNotificationDelegate* const delegate_;
};

}  // namespace voxtrel
