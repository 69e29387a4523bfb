#include "quillback/model/ProgressLine.h"

#include <algorithm>

namespace voxtrel::quillback {

namespace {

constexpr std::uint64_t kBytesPerMegabyte = 1'000'000;
// Eight lines a second, because the last line does not wait.
constexpr std::chrono::milliseconds kMinInterval(125);

/// Independent of the locale.
std::string decimal(std::uint64_t tenths) {
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::uint64_t perMille(std::uint64_t done, std::uint64_t total) {
  if (done >= total) return 1000;
  // Here the product would overflow.
  if (done > UINT64_MAX / 1000) return std::min<std::uint64_t>(done / (total / 1000), 999);
  return done * 1000 / total;
}

}  // namespace

std::string formatProgress(std::uint64_t doneBytes, std::uint64_t totalBytes) {
  constexpr std::uint64_t kTenth = kBytesPerMegabyte / 10;
  return decimal(doneBytes / kTenth) + " MB / " + decimal(totalBytes / kTenth) + " MB (" +
         decimal(perMille(doneBytes, totalBytes)) + "%)";
}

std::string formatMegabytes(std::uint64_t bytes) {
  return std::to_string(bytes / kBytesPerMegabyte + (bytes % kBytesPerMegabyte > 0 ? 1 : 0)) +
         " MB";
}

bool ProgressThrottle::isDue(TimePoint now, bool isLast) {
  if (isOver_) return false;
  if (!isLast && lastLine_ && now - *lastLine_ < kMinInterval) return false;
  lastLine_ = now;
  isOver_ = isLast;
  return true;
}

}  // namespace voxtrel::quillback
