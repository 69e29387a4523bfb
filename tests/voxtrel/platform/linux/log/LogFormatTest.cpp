#include <gtest/gtest.h>

#include "voxtrel/platform/linux/log/LogFormat.h"

namespace voxtrel {
namespace {

TEST(LogLine, namesLevelAndCategoryBeforeTheMessage) {
  EXPECT_EQ(logLine(LogLevel::error, "process", "Process exited with code 3"),
            "voxtrel: error [process] Process exited with code 3\n");
  EXPECT_EQ(logLine(LogLevel::info, "main", "Voxtrel launching"),
            "voxtrel: info [main] Voxtrel launching\n");
  EXPECT_EQ(logLine(LogLevel::debug, "process", ""), "voxtrel: debug [process] \n");
}

TEST(LogLine, staysOneLineForEveryMessage) {
  EXPECT_EQ(logLine(LogLevel::info, "ui", "a\nb\r\n"), "voxtrel: info [ui] a\\nb\\r\\n\n");
}

TEST(LogLine, escapesControlCharactersAndKeepsTabsAndUtf8) {
  using namespace std::string_view_literals;
  EXPECT_EQ(logLine(LogLevel::info, "ui", "\x1b[2J\t\x7f—\0."sv),
            "voxtrel: info [ui] \\x1b[2J\t\\x7f—\\x00.\n");
}

using Fields = std::array<std::string, 4>;

TEST(JournalFields, nameTheApplicationAndTheCategoryBesideMessageAndPriority) {
  EXPECT_EQ(journalFields(LogLevel::error, "process", "Process exited with code 3"),
            (Fields{"MESSAGE=Process exited with code 3", "PRIORITY=3",
                    "SUBSYSTEM=org.voxtrel.Voxtrel", "CATEGORY=process"}));
  EXPECT_EQ(
      journalFields(LogLevel::info, "ui", "a\nb = c"),
      (Fields{"MESSAGE=a\nb = c", "PRIORITY=6", "SUBSYSTEM=org.voxtrel.Voxtrel", "CATEGORY=ui"}));
}

TEST(JournalFields, markEngineLinesAsDebug) {
  EXPECT_EQ(journalFields(LogLevel::debug, "process", "")[1], "PRIORITY=7");
}

}  // namespace
}  // namespace voxtrel
