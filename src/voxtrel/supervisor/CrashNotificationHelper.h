#pragma once

#include <cstdint>

namespace voxtrel {

class Notifications;

/// Posts the notifications about crashes, each of which carries the Restart button.
/// Thread: any.
struct CrashNotificationHelper {
  static constexpr const char* kCategory = "CRASH_CATEGORY";
  static constexpr const char* kRestartAction = "RESTART_ACTION";

  /// Tells that the engine will be started again.
  static void postRestart(Notifications& notifications, std::int64_t attempt,
                          std::int64_t maxCrashes);

  /// Tells that the engine was given up on.
  static void postFinal(Notifications& notifications, std::int64_t maxCrashes);
};

}  // namespace voxtrel
