#include "voxtrel/supervisor/CrashPolicy.h"

#include <algorithm>
#include <cstddef>

namespace voxtrel {

std::optional<std::chrono::milliseconds> relaunchDelay(std::int64_t crashCount) {
  if (crashCount > kMaxCrashes) return std::nullopt;
  const auto attempt = static_cast<std::size_t>(crashCount - 1);
  return kBackoffDelays.at(std::min(kBackoffDelays.size() - 1, attempt));
}

}  // namespace voxtrel
