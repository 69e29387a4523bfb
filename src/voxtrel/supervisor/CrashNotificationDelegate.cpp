#include "voxtrel/supervisor/CrashNotificationDelegate.h"

#include "voxtrel/supervisor/CrashNotificationHelper.h"
#include "voxtrel/supervisor/ProcessManager.h"

namespace voxtrel {

void CrashNotificationDelegate::didReceive(const NotificationResponse& response,
                                           const std::function<void()>& completion) {
  if (response.actionIdentifier == CrashNotificationHelper::kRestartAction) {
    if (const auto manager = processManager.lock()) {
      manager->resetCrashCount();
      manager->launch();
    }
  }
  completion();
}

void CrashNotificationDelegate::willPresent(
    const UserNotification& /*notification*/,
    const std::function<void(PresentationOptions)>& completion) {
  completion(PresentationOptions::banner | PresentationOptions::sound);
}

}  // namespace voxtrel
