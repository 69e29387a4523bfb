#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

inline constexpr int kRounds = 60;

inline double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.at(values.size() / 2);
}

inline void report(const char* what, const std::vector<double>& ours,
                   const std::vector<double>& bare, double aim) {
  std::printf("%s, ms: %.2f\n", what, median(ours));
  std::printf("%s, bare, ms: %.2f\n", what, median(bare));
  std::printf("%s, ratio (aim %.1f): %.2f\n", what, aim, median(ours) / median(bare));
}

}  // namespace bench
