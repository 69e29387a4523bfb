#pragma once

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>
#if defined(__APPLE__)
#include <malloc/malloc.h>
#else
#include <malloc.h>
#endif

#include <cstddef>
#include <functional>

namespace voxtrel {

/// Bytes that the program has allocated and not freed.
inline std::size_t bytesInUse() {
#if defined(__APPLE__)
  malloc_statistics_t statistics;
  malloc_zone_statistics(nullptr, &statistics);
  return statistics.size_in_use;
#else
  return ::mallinfo2().uordblks;
#endif
}

/// Expects that a thousand rounds leave less than a pointer each. The first hundred may fill caches.
inline void expectNoGrowth(const std::function<void()>& round) {
  constexpr std::size_t kRounds = 1000;
  const auto repeat = [&](std::size_t times) {
    for (std::size_t time = 0; time < times; ++time) {
      @autoreleasepool {
        round();
      }
    }
  };
  repeat(kRounds / 10);
  const std::size_t before = bytesInUse();
  repeat(kRounds);
  EXPECT_LT(bytesInUse(), before + kRounds * sizeof(void*));
}

}  // namespace voxtrel
