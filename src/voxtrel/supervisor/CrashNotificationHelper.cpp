#include "voxtrel/supervisor/CrashNotificationHelper.h"

#include <string>
#include <utility>

#include "voxtrel/platform/Notifications.h"
#include "voxtrel/supervisor/Uuid.h"

namespace voxtrel {
namespace {

void post(Notifications& notifications, std::string body) {
  notifications.post({.identifier = randomUuid(),
                      .title = "Voxtrel",
                      .body = std::move(body),
                      .categoryIdentifier = CrashNotificationHelper::kCategory});
}

}  // namespace

void CrashNotificationHelper::postRestart(Notifications& notifications, std::int64_t attempt,
                                          std::int64_t maxCrashes) {
  post(notifications, "Process crashed. Restarting (attempt " + std::to_string(attempt) + "/" +
                          std::to_string(maxCrashes) + ")...");
}

void CrashNotificationHelper::postFinal(Notifications& notifications, std::int64_t maxCrashes) {
  post(notifications, "Process crashed " + std::to_string(maxCrashes) +
                          " times. Stopped. Use menu bar to restart.");
}

}  // namespace voxtrel
