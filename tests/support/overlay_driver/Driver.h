#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "support/overlay_driver/RealOverlay.h"

namespace voxtrel::testing {

/// Shows and hides the overlay on command and counts its frames and buffers.
/// Thread: the main thread.
class Driver {
 public:
  Driver();

  /// show, hide -> prints how many microseconds the call took
  /// stats      -> prints "frames N blocks N rate HZ descriptors N threads N windows N"
  /// quit       -> ends the application
  void obey(const std::string& command);

 private:
  static void printDurationOf(const std::function<void()>& call);
  void printStats() const;

  int frames_ = 0;
  std::atomic<int> blocks_ = 0;
  std::atomic<double> sampleRateHz_ = 0;
  RealOverlay real_;
};

}  // namespace voxtrel::testing
