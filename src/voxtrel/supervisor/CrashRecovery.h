#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "voxtrel/platform/Notifications.h"

namespace voxtrel {

class ProcessManager;

/// Abnormal exits in a row that lead to a relaunch.
inline constexpr std::int64_t kMaxCrashes = 3;

/// How long to wait before the first, second and third relaunch.
inline constexpr std::array kBackoffDelays = {std::chrono::milliseconds(1000),
                                              std::chrono::milliseconds(2000),
                                              std::chrono::milliseconds(4000)};

/// How long to wait before the relaunch that follows the `crashCount`-th abnormal exit in a row
/// (from 1); none: give up.
std::optional<std::chrono::milliseconds> relaunchDelay(std::int64_t crashCount);

/// Posts the notifications about crashes. Each has the Restart button and its own identifier.
/// Thread: any.
struct CrashNotificationHelper {
  static constexpr const char* kCategory = "CRASH_CATEGORY";
  static constexpr const char* kRestartAction = "RESTART_ACTION";

  /// Says that the engine will be started again.
  static void postRestart(Notifications& notifications, std::int64_t attempt,
                          std::int64_t maxCrashes);

  /// Says that the engine will not be started again.
  static void postFinal(Notifications& notifications, std::int64_t maxCrashes);
};

/// Handles the Restart button of the crash notifications.
/// Thread: the main thread.  Borrows: the supervisor, weakly.
class CrashNotificationDelegate : public NotificationDelegate {
 public:
  /// Empty until start-up has made the supervisor; Restart then does nothing.
  std::weak_ptr<ProcessManager> processManager;

  void didReceive(const NotificationResponse& response,
                  const std::function<void()>& completion) override;
  /// Crash notifications show, with their sound, even while the application is in front.
  void willPresent(const UserNotification& notification,
                   const std::function<void(PresentationOptions)>& completion) override;
};

}  // namespace voxtrel
