#include <gtest/gtest.h>

#include "voxtrel/platform/linux/log/OpenLog.h"

namespace voxtrel {
namespace {

TEST(JournalLog, writesEngineLinesOnlyWhenDebugIsEnabled) {
  EXPECT_FALSE(JournalLog(LogLevel::info).isEnabled(LogLevel::debug));
  EXPECT_TRUE(JournalLog(LogLevel::debug).isEnabled(LogLevel::debug));
}

TEST(LogVerbosity, isInfoUnlessDebugIsRequested) {
  EXPECT_EQ(LogVerbosity::parse(nullptr).lowest, LogLevel::info);
  EXPECT_EQ(LogVerbosity::parse("").lowest, LogLevel::info);
  EXPECT_EQ(LogVerbosity::parse("info").lowest, LogLevel::info);
  EXPECT_EQ(LogVerbosity::parse("debug").lowest, LogLevel::debug);
  EXPECT_FALSE(LogVerbosity::parse("debug").complaint);
  EXPECT_FALSE(LogVerbosity::parse("").complaint);
}

TEST(LogVerbosity, namesTheKnownValuesWhenItGetsAnUnknownOne) {
  const LogVerbosity verbosity = LogVerbosity::parse("Debug");
  EXPECT_EQ(verbosity.lowest, LogLevel::info);
  EXPECT_EQ(verbosity.complaint,
            "VOXTREL_LOG has the unknown value \"Debug\"; known are \"debug\" and \"info\"");
}

TEST(JournalStream, isUsedOnlyIfItNamesThisStream) {
  EXPECT_TRUE(namesStream("8:12345", 8, 12345));
  EXPECT_FALSE(namesStream("8:12345", 8, 1234));
  EXPECT_FALSE(namesStream("8:12345", 9, 12345));
  EXPECT_FALSE(namesStream("8:12345 ", 8, 12345));
  EXPECT_FALSE(namesStream("", 0, 0));
  EXPECT_FALSE(namesStream(nullptr, 0, 0));
}

}  // namespace
}  // namespace voxtrel
