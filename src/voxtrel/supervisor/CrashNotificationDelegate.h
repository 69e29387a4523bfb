#pragma once

#include <memory>

#include "voxtrel/platform/Notifications.h"

namespace voxtrel {

class ProcessManager;

/// Answers the Restart button of the crash notifications.
/// Thread: the main thread.  Borrows: the supervisor, weakly.
class CrashNotificationDelegate : public NotificationDelegate {
 public:
  /// None until start-up has made the supervisor; Restart then does nothing.
  std::weak_ptr<ProcessManager> processManager;

  void didReceive(const NotificationResponse& response,
                  const std::function<void()>& completion) override;
  /// Crash notifications show, with their sound, even while the application is in front.
  void willPresent(const UserNotification& notification,
                   const std::function<void(PresentationOptions)>& completion) override;
};

}  // namespace voxtrel
