#pragma once

#include <chrono>
#include <cstdint>

namespace voxtrel::quillback {

/// Tells when a transfer brings less than 1 KB/s for as long as `limit`.
/// Thread: one.
class StallWatch {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  StallWatch(std::chrono::milliseconds limit, TimePoint now) : limit_(limit), since_(now) {}

  void onBytes(std::uint64_t count, TimePoint now) {
    bytes_ += count;
    if (bytes_ < enoughBytes()) return;
    bytes_ = 0;
    since_ = now;
  }
  bool isStalled(TimePoint now) const { return now - since_ >= limit_; }

 private:
  /// 1000 bytes for each second: one for each millisecond.
  std::uint64_t enoughBytes() const { return static_cast<std::uint64_t>(limit_.count()); }

  std::chrono::milliseconds limit_;
  TimePoint since_;          ///< when enough had arrived the last time
  std::uint64_t bytes_ = 0;  ///< since then
};

}  // namespace voxtrel::quillback
