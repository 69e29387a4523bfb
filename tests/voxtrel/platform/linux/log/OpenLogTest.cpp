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

TEST(LogVerbosity, keepsDictatedWordsOnlyWhenTheyAreRequested) {
  EXPECT_FALSE(LogVerbosity::parse(nullptr).keepsWords);
  EXPECT_FALSE(LogVerbosity::parse("debug").keepsWords);
  EXPECT_TRUE(LogVerbosity::parse("debug,words").keepsWords);
  EXPECT_EQ(LogVerbosity::parse("debug,words").lowest, LogLevel::debug);
  for (const char* unknown : {"words", "info,words", "debug,", "debug,word"}) {
    EXPECT_TRUE(LogVerbosity::parse(unknown).complaint) << unknown;
    EXPECT_FALSE(LogVerbosity::parse(unknown).keepsWords) << unknown;
  }
}

TEST(LogVerbosity, namesTheKnownValuesWhenItGetsAnUnknownOne) {
  const LogVerbosity verbosity = LogVerbosity::parse("Debug");
  EXPECT_EQ(verbosity.lowest, LogLevel::info);
  EXPECT_EQ(verbosity.complaint,
            "VOXTREL_LOG has the unknown value \"Debug\"; known are \"info\", \"debug\" and "
            "\"debug,words\"");
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
