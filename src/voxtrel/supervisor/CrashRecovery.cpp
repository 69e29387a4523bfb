#include "voxtrel/supervisor/CrashRecovery.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "voxtrel/supervisor/ProcessManager.h"

namespace voxtrel {
namespace {

/// A random UUID (RFC 4122, version 4), such as "6FA459EA-EE8A-4CA4-894E-DB77E160355E".
std::string randomUuid() {
  constexpr std::string_view kPattern = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::random_device device;
  std::uniform_int_distribution<std::size_t> anyDigit(0, 15);
  std::uniform_int_distribution<std::size_t> variantDigit(8, 11);
  std::string uuid(kPattern);
  for (char& digit : uuid) {
    if (digit == 'x') digit = kDigits[anyDigit(device)];
    if (digit == 'y') digit = kDigits[variantDigit(device)];
  }
  return uuid;
}

void post(Notifications& notifications, std::string body) {
  notifications.post({.identifier = randomUuid(),
                      .title = "Voxtrel",
                      .body = std::move(body),
                      .categoryIdentifier = CrashNotificationHelper::kCategory});
}

}  // namespace

std::optional<std::chrono::milliseconds> relaunchDelay(std::int64_t crashCount) {
  if (crashCount > kMaxCrashes) return std::nullopt;
  const auto attempt = static_cast<std::size_t>(crashCount - 1);
  return kBackoffDelays.at(std::min(kBackoffDelays.size() - 1, attempt));
}

void CrashNotificationHelper::postRestart(Notifications& notifications, std::int64_t attempt,
                                          std::int64_t maxCrashes) {
  post(notifications, "Process crashed. Restarting (attempt " + std::to_string(attempt) + "/" +
                          std::to_string(maxCrashes) + ")...");
}

void CrashNotificationHelper::postFinal(Notifications& notifications, std::int64_t maxCrashes) {
  post(notifications, "Process crashed " + std::to_string(maxCrashes) +
                          " times. Stopped. Use menu bar to restart.");
}

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
