#include "voxtrel/platform/posix/SteadyClock.h"

#include <thread>

namespace voxtrel {

Clock::TimePoint SteadyClock::now() const {
  return std::chrono::steady_clock::now();
}

void SteadyClock::sleepFor(std::chrono::milliseconds duration) {
  std::this_thread::sleep_for(duration);
}

}  // namespace voxtrel
