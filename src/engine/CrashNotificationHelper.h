#pragma once

#include <cstdint>

namespace voxtrel {

class Notifications;

/// The notifications about crashes; each carries the Restart button.
/// Thread: any.
namespace CrashNotificationHelper {

inline constexpr const char* kCategory = "CRASH_CATEGORY";
inline constexpr const char* kRestartAction = "RESTART_ACTION";

/// Tells that the engine will be started again.
void postRestart(Notifications& notifications, std::int64_t attempt, std::int64_t maxCrashes);

/// Tells that the engine was given up on.
void postFinal(Notifications& notifications, std::int64_t maxCrashes);

}  // namespace CrashNotificationHelper
}  // namespace voxtrel
