#include <gtest/gtest.h>

#include "voxtrel/platform/linux/log/LogLine.h"

namespace voxtrel {
namespace {

TEST(LogLine, namesLevelAndCategoryBeforeTheMessage) {
  EXPECT_EQ(logLine(LogLevel::error, "process", "Process exited with code 3"),
            "voxtrel: error [process] Process exited with code 3\n");
  EXPECT_EQ(logLine(LogLevel::info, "main", "Voxtrel launching"),
            "voxtrel: info [main] Voxtrel launching\n");
  EXPECT_EQ(logLine(LogLevel::debug, "process", ""), "voxtrel: debug [process] \n");
}

TEST(LogLine, staysOneLineWhateverTheMessageHolds) {
  EXPECT_EQ(logLine(LogLevel::info, "ui", "a\nb\r\n"), "voxtrel: info [ui] a\\nb\\r\\n\n");
}

TEST(LogLine, escapesWhatCommandsATerminalAndKeepsTabsAndUtf8) {
  using namespace std::string_view_literals;
  EXPECT_EQ(logLine(LogLevel::info, "ui", "\x1b[2J\t\x7f—\0."sv),
            "voxtrel: info [ui] \\x1b[2J\t\\x7f—\\x00.\n");
}

TEST(LogVerbosity, isInfoUnlessDebugIsAskedFor) {
  EXPECT_EQ(LogVerbosity::parse(nullptr).lowest, LogLevel::info);
  EXPECT_EQ(LogVerbosity::parse("").lowest, LogLevel::info);
  EXPECT_EQ(LogVerbosity::parse("info").lowest, LogLevel::info);
  EXPECT_EQ(LogVerbosity::parse("debug").lowest, LogLevel::debug);
  EXPECT_FALSE(LogVerbosity::parse("debug").complaint);
  EXPECT_FALSE(LogVerbosity::parse("").complaint);
}

TEST(LogVerbosity, complainsAboutAnUnknownValueAndNamesTheKnownOnes) {
  const LogVerbosity verbosity = LogVerbosity::parse("Debug");
  EXPECT_EQ(verbosity.lowest, LogLevel::info);
  EXPECT_EQ(verbosity.complaint,
            "VOXTREL_LOG has the unknown value \"Debug\"; known are \"debug\" and \"info\"");
}

TEST(JournalStream, isTakenOnlyWhenItNamesThisVeryStream) {
  EXPECT_TRUE(namesStream("8:12345", 8, 12345));
  EXPECT_FALSE(namesStream("8:12345", 8, 1234));
  EXPECT_FALSE(namesStream("8:12345", 9, 12345));
  EXPECT_FALSE(namesStream("8:12345 ", 8, 12345));
  EXPECT_FALSE(namesStream("", 0, 0));
  EXPECT_FALSE(namesStream(nullptr, 0, 0));
}

}  // namespace
}  // namespace voxtrel
