#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>

namespace voxtrel {

/// Abnormal exits in a row that are answered with a relaunch.
inline constexpr std::int64_t kMaxCrashes = 3;

/// How long to wait before the first, second and third relaunch.
inline constexpr std::array kBackoffDelays = {std::chrono::milliseconds(1000),
                                              std::chrono::milliseconds(2000),
                                              std::chrono::milliseconds(4000)};

/// The wait before the relaunch that answers the `crashCount`-th abnormal exit in a row (from 1),
/// or none: the engine is given up on.
std::optional<std::chrono::milliseconds> relaunchDelay(std::int64_t crashCount);

}  // namespace voxtrel
