#include "engine/CrashNotificationHelper.h"

#include <string>

#include "engine/Uuid.h"
#include "platform/Notifications.h"

namespace voxtrel::CrashNotificationHelper {
namespace {

void post(Notifications& notifications, std::string body) {
  notifications.post({.identifier = randomUuid(),
                      .title = "Voxtrel",
                      .body = std::move(body),
                      .categoryIdentifier = kCategory});
}

}  // namespace

void postRestart(Notifications& notifications, std::int64_t attempt, std::int64_t maxCrashes) {
  post(notifications, "Process crashed. Restarting (attempt " + std::to_string(attempt) + "/" +
                          std::to_string(maxCrashes) + ")...");
}

void postFinal(Notifications& notifications, std::int64_t maxCrashes) {
  post(notifications, "Process crashed " + std::to_string(maxCrashes) +
                          " times. Stopped. Use menu bar to restart.");
}

}  // namespace voxtrel::CrashNotificationHelper
