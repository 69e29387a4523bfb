#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/OrdinaryUser.h"
#include "support/ScratchFolder.h"
#include "voxtrel/platform/linux/session/QSettingsUserDefaults.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

struct UserDefaultsOnDisk : ::testing::Test {
  std::string text() const {
    std::ifstream file(folder.path() / "voxtrel/voxtrel.conf", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  ScratchFolder folder;
  testing::OrdinaryUser ordinaryUser{folder.path()};
  QSettingsUserDefaults defaults{folder.path().string()};
};

TEST_F(UserDefaultsOnDisk, areFalseUntilSetAndTouchNoFileUntilThen) {
  EXPECT_FALSE(defaults.boolForKey("launchAtLogin"));
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(UserDefaultsOnDisk, areOnDiskAtOnceForTheNextRun) {
  defaults.setBool("launchAtLogin", true);
  EXPECT_EQ(text(), "[General]\nlaunchAtLogin=true\n");
  EXPECT_TRUE(QSettingsUserDefaults(folder.path().string()).boolForKey("launchAtLogin"));
  defaults.setBool("launchAtLogin", false);
  EXPECT_FALSE(QSettingsUserDefaults(folder.path().string()).boolForKey("launchAtLogin"));
}

TEST_F(UserDefaultsOnDisk, keepKeysApartAndOtherLinesUnchanged) {
  folder.write("voxtrel/voxtrel.conf", "[General]\nother=7\n");
  defaults.setBool("launchAtLogin", true);
  EXPECT_NE(text().find("other=7"), std::string::npos);
  EXPECT_FALSE(defaults.boolForKey("somethingElse"));
}

TEST_F(UserDefaultsOnDisk, thatAreMalformedAreFalse) {
  for (const char* text :
       {"[General]\nlaunchAtLogin=0\n", "[General]\nlaunchAtLogin=\n", "\xff\xfe rubbish [[[",
        "launchAtLogin", "[Other]\nlaunchAtLogin=true"}) {
    ScratchFolder other;
    other.write("voxtrel/voxtrel.conf", text);
    EXPECT_FALSE(QSettingsUserDefaults(other.path().string()).boolForKey("launchAtLogin")) << text;
  }
}

TEST_F(UserDefaultsOnDisk, loseWhatCannotBeWritten) {
  ::chmod(folder.path().c_str(), 0555);
  defaults.setBool("launchAtLogin", true);
  EXPECT_FALSE(defaults.boolForKey("launchAtLogin"));
  ::chmod(folder.path().c_str(), 0755);
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(UserDefaultsOnDisk, withoutASettingsFolderAreNotKept) {
  QSettingsUserDefaults homeless("");
  homeless.setBool("launchAtLogin", true);
  EXPECT_FALSE(homeless.boolForKey("launchAtLogin"));
}

}  // namespace
}  // namespace voxtrel
