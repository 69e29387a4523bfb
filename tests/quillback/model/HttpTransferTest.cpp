#include <gtest/gtest.h>

#include "quillback/model/HttpTransfer.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;

TEST(StallWatchTest, NothingForThirtySecondsIsAStall) {
  const StallWatch::TimePoint start{};
  StallWatch watch(30s, start);
  EXPECT_FALSE(watch.isStalled(start + 29'999ms));
  EXPECT_TRUE(watch.isStalled(start + 30s));
}

TEST(StallWatchTest, ASlowButSufficientTransferIsNoStall) {
  StallWatch::TimePoint now{};
  StallWatch watch(30s, now);
  for (int second = 0; second < 300; ++second) {
    now += 1s;
    watch.onBytes(1100, now);
    EXPECT_FALSE(watch.isStalled(now));
  }
}

TEST(StallWatchTest, TooFewBytesAreAStall) {
  StallWatch::TimePoint now{};
  StallWatch watch(30s, now);
  for (int second = 0; second < 30; ++second) {
    EXPECT_FALSE(watch.isStalled(now));
    now += 1s;
    watch.onBytes(900, now);
  }
  EXPECT_TRUE(watch.isStalled(now));
}

}  // namespace
}  // namespace voxtrel::quillback
