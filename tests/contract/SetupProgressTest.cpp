// The progress that the engine's setup prints is what the application's set-up window shows.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <ostream>
#include <string>

#include "quillback/model/ProgressLine.h"
#include "support/RandomText.h"
#include "voxtrel/download/SetupOutput.h"
#include "voxtrel/supervisor/LineProtocol.h"

namespace voxtrel::quillback {
namespace {

constexpr std::uint64_t kTotal = 3'095'033'483;

void expectShown(std::uint64_t done, std::uint64_t total) {
  const std::string line = formatProgress(done, total);
  const auto progress = parseProgress(line);
  ASSERT_TRUE(progress) << line;
  const double wholeTenths =
      std::floor(1000.0 * static_cast<double>(done) / static_cast<double>(total));
  EXPECT_NEAR(progress->fraction, wholeTenths / 1000, 1e-9) << line;
  EXPECT_TRUE(line.starts_with(progress->downloadedMB + " / " + progress->totalMB + " (")) << line;
  EXPECT_FALSE(isLogged(line)) << line;
  const LineEffects effects = interpretLine(line);
  EXPECT_FALSE(effects.state || effects.isError || effects.transcription) << line;
}

TEST(SetupProgressLines, AreUnderstoodAtEveryPoint) {
  for (std::uint64_t done = 0; done <= kTotal; done += kTotal / 997) expectShown(done, kTotal);
  expectShown(kTotal, kTotal);
  EXPECT_EQ(parseProgress(formatProgress(812'400'000, kTotal)),
            (SetupProgress{"812.4 MB", "3095.0 MB", 0.262}));
}

TEST(SetupProgressLines, AreUnderstoodForFilesOfAnySize) {
  RandomText random(63);
  for (int round = 0; round < 10'000; ++round) {
    const std::uint64_t total = 1 + random.below(std::uint64_t{1} << (10 + random.below(40)));
    expectShown(random.below(total + 1), total);
  }
}

TEST(SetupProgressLines, ReachOneOnlyAtTheEnd) {
  EXPECT_LT(parseProgress(formatProgress(kTotal - 1, kTotal))->fraction, 1.0);
  EXPECT_EQ(parseProgress(formatProgress(kTotal, kTotal))->fraction, 1.0);
}

}  // namespace
}  // namespace voxtrel::quillback
