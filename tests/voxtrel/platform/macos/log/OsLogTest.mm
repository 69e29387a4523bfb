#include <gmock/gmock.h>
#include <gtest/gtest.h>

#import "rig_oslog.h"
#include "support/macos/Growth.h"
#import "voxtrel/platform/macos/log/OsLog.h"

namespace voxtrel {
namespace {

struct OsLogTest : testing::Test {
  /// What was written since the last call.
  std::vector<std::string> lines() {
    const auto all = rigLogLines();
    const std::vector<std::string> fresh(all.begin() + static_cast<std::ptrdiff_t>(seen),
                                         all.end());
    seen = all.size();
    return fresh;
  }

  std::size_t seen = rigLogLines().size();
  OsLog log{"org.example.Test"};
};

TEST_F(OsLogTest, eachCategoryAndLevelIsKept) {
  for (const char* category : {"process", "main", "audio", "ui"}) {
    log.write(LogLevel::info, category, "Hello");
  }
  log.write(LogLevel::error, "audio", "No device");
  EXPECT_THAT(lines(), testing::ElementsAre(
                           "org.example.Test:process [1] Hello", "org.example.Test:main [1] Hello",
                           "org.example.Test:audio [1] Hello", "org.example.Test:ui [1] Hello",
                           "org.example.Test:audio [16] No device"));
}

TEST_F(OsLogTest, aPrivatePartIsHiddenAndTheRestIsNot) {
  Logger(log, "process").errorWithPrivate("quillback binary not found at ", "/Users/ann/quillback");
  EXPECT_THAT(lines(),
              testing::ElementsAre(
                  "org.example.Test:process [16] quillback binary not found at <private>"));
}

TEST_F(OsLogTest, whatIsNotEnabledIsNotWritten) {
  ASSERT_FALSE(log.isEnabled(LogLevel::debug));
  Logger(log, "process").debugPrivate("[gpu-decode] text: \"secret\"");
  EXPECT_THAT(lines(), testing::IsEmpty());
}

TEST_F(OsLogTest, aMessageIsNeverReadAsAFormat) {
  log.write(LogLevel::error, "ui", "100 %s %n %d");
  EXPECT_THAT(lines(), testing::ElementsAre("org.example.Test:ui [16] 100 %s %n %d"));
}

TEST_F(OsLogTest, anUnknownCategoryGoesToTheMainOne) {
  log.write(LogLevel::info, "other", "Hello");
  EXPECT_THAT(lines(), testing::ElementsAre("org.example.Test:main [1] Hello"));
}

TEST_F(OsLogTest, aThousandRoundsKeepNothing) {
  expectNoGrowth([] {
    OsLog shortLived("org.example.Test");
    shortLived.write(LogLevel::debug, "ui", "what the rig does not keep");
    shortLived.writePrivate(LogLevel::debug, "ui", "what the rig", "does not keep");
  });
}

}  // namespace
}  // namespace voxtrel
