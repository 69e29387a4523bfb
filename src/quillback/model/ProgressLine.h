#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace voxtrel::quillback {

/// "812.4 MB / 3095.0 MB (26.2%)": millions of bytes, as people count a download. Rounded down, so
/// that 100.0% means all of it.
std::string formatProgress(std::uint64_t doneBytes, std::uint64_t totalBytes);

/// Millions of bytes without a fraction, rounded up: "3096 MB".
std::string formatMegabytes(std::uint64_t bytes);

/// Lets through at most 10 lines in any second, the last one among them in any case.
/// Thread: one.
class ProgressThrottle {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  /// Whether a line is due now; `isLast`: it is, once.
  bool isDue(TimePoint now, bool isLast);

 private:
  std::optional<TimePoint> lastLine_;
  bool isOver_ = false;
};

}  // namespace voxtrel::quillback
