#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "quillback/model/ProgressLine.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t kTotal = 3'095'033'483;

TEST(ProgressLineTest, ProgressIsInMillionsOfBytes) {
  EXPECT_EQ(formatProgress(812'400'000, kTotal), "812.4 MB / 3095.0 MB (26.2%)");
  EXPECT_EQ(formatProgress(0, kTotal), "0.0 MB / 3095.0 MB (0.0%)");
  EXPECT_EQ(formatProgress(kTotal, kTotal), "3095.0 MB / 3095.0 MB (100.0%)");
  EXPECT_EQ(formatProgress(0, 0), "0.0 MB / 0.0 MB (100.0%)");
}

TEST(ProgressLineTest, AHundredPercentMeansEverything) {
  EXPECT_EQ(formatProgress(kTotal - 1, kTotal), "3095.0 MB / 3095.0 MB (99.9%)");
  EXPECT_EQ(formatProgress(UINT64_MAX - 1, UINT64_MAX),
            "18446744073709.5 MB / 18446744073709.5 MB (99.9%)");
}

TEST(ProgressLineTest, ProgressHasTheFormatThatTheApplicationReads) {
  for (std::uint64_t done = 0; done <= kTotal; done += kTotal / 7) {
    EXPECT_THAT(formatProgress(done, kTotal),
                testing::MatchesRegex("[0-9]+\\.[0-9] MB / 3095\\.0 MB \\([0-9]+\\.[0-9]%\\)"));
  }
}

TEST(ProgressLineTest, MegabytesAreRoundedUp) {
  EXPECT_EQ(formatMegabytes(0), "0 MB");
  EXPECT_EQ(formatMegabytes(1), "1 MB");
  EXPECT_EQ(formatMegabytes(1'000'000), "1 MB");
  EXPECT_EQ(formatMegabytes(kTotal), "3096 MB");
}

TEST(ProgressThrottleTest, AtMostTenLinesAreDueInAnySecond) {
  ProgressThrottle throttle;
  ProgressThrottle::TimePoint now{};
  std::vector<ProgressThrottle::TimePoint> lines;
  for (int step = 0; step <= 5000; ++step, now += 1ms) {
    if (throttle.isDue(now, step == 5000)) lines.push_back(now);
  }
  EXPECT_EQ(lines.front(), ProgressThrottle::TimePoint{});
  EXPECT_EQ(lines.back(), ProgressThrottle::TimePoint{} + 5s);
  EXPECT_GT(lines.size(), 30U);
  for (const auto line : lines) {
    const auto inSecond = std::ranges::count_if(
        lines, [line](auto other) { return other >= line && other < line + 1s; });
    EXPECT_LE(inSecond, 10);
  }
}

TEST(ProgressThrottleTest, TheLastLineIsDueAtOnceAndOnlyOnce) {
  ProgressThrottle throttle;
  const ProgressThrottle::TimePoint now{};
  EXPECT_TRUE(throttle.isDue(now, false));
  EXPECT_FALSE(throttle.isDue(now, false));
  EXPECT_TRUE(throttle.isDue(now, true));
  EXPECT_FALSE(throttle.isDue(now + 1h, true));
}

}  // namespace
}  // namespace voxtrel::quillback
