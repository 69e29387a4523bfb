#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace voxtrel::quillback {

/// "812.4 MB / 3095.0 MB (26.2%)", in millions of bytes. Rounded down, so 100.0% means everything.
std::string formatProgress(std::uint64_t doneBytes, std::uint64_t totalBytes);

/// "3096 MB": millions of bytes, rounded up.
std::string formatMegabytes(std::uint64_t bytes);

/// Allows at most 10 progress lines per second, and always the last one.
/// Thread: one.
class ProgressThrottle {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  /// Whether to print a line now. The last line is due once, and no line after it.
  bool isDue(TimePoint now, bool isLast);

 private:
  std::optional<TimePoint> lastLine_;
  bool isOver_ = false;
};

}  // namespace voxtrel::quillback
