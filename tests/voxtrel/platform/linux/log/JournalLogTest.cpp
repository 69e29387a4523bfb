#include <gtest/gtest.h>

#include "voxtrel/platform/linux/log/JournalLog.h"

namespace voxtrel {
namespace {

using Fields = std::array<std::string, 4>;

TEST(JournalLog, namesTheApplicationAndTheCategoryBesideMessageAndPriority) {
  EXPECT_EQ(journalFields(LogLevel::error, "process", "Process exited with code 3"),
            (Fields{"MESSAGE=Process exited with code 3", "PRIORITY=3",
                    "SUBSYSTEM=org.voxtrel.Voxtrel", "CATEGORY=process"}));
  EXPECT_EQ(
      journalFields(LogLevel::info, "ui", "a\nb = c"),
      (Fields{"MESSAGE=a\nb = c", "PRIORITY=6", "SUBSYSTEM=org.voxtrel.Voxtrel", "CATEGORY=ui"}));
}

TEST(JournalLog, marksEngineLinesAsDebug) {
  EXPECT_EQ(journalFields(LogLevel::debug, "process", "")[1], "PRIORITY=7");
  EXPECT_FALSE(JournalLog(LogLevel::info).isEnabled(LogLevel::debug));
  EXPECT_TRUE(JournalLog(LogLevel::debug).isEnabled(LogLevel::debug));
}

}  // namespace
}  // namespace voxtrel
