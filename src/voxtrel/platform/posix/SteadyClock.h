#pragma once

#include "voxtrel/platform/Scheduling.h"

namespace voxtrel {

/// The system's monotonic clock.
/// Thread: any.
class SteadyClock : public Clock {
 public:
  TimePoint now() const override;
  void sleepFor(std::chrono::milliseconds duration) override;
};

}  // namespace voxtrel
