#include <gmock/gmock.h>
#include <sys/stat.h>

#include "quillback/settings/EngineSettings.h"
#include "quillback/settings/SettingsFile.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SettingsFileTest : public testing::Test {
 protected:
  void write(std::string_view text) { folder_.write(".config/quillback/config.toml", text); }

  voxtrel::ScratchFolder folder_;
  const std::string path_ = settingsPath(folder_.path());
};

TEST_F(SettingsFileTest, AMissingFileIsNoMistake) {
  EXPECT_THAT(readSettings(path_).errors, IsEmpty());
  folder_.write(".config/quillback", "a file where a folder should be");
  EXPECT_THAT(readSettings(path_).errors, IsEmpty());
}

TEST_F(SettingsFileTest, IsReadWhole) {
  write("# " + std::string(10'000, 'x') + "\n[model]\nlanguage = 'it'\n");
  EXPECT_EQ(readSettings(path_).settings.language, "it");
}

TEST_F(SettingsFileTest, AFolderIsNoFile) {
  folder_.prepare(".config/quillback/config.toml/x");
  EXPECT_THAT(readSettings(path_).errors, ElementsAre(HasSubstr("regular file")));
}

TEST_F(SettingsFileTest, APipeIsNoFileAndKeepsNobodyWaiting) {
  folder_.prepare(".config/quillback/config.toml");
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_THAT(readSettings(path_).errors, ElementsAre(HasSubstr("regular file")));
}

TEST_F(SettingsFileTest, AHundredMegabytesAreNoSettings) {
  write("");
  ASSERT_EQ(::truncate(path_.c_str(), 100'000'000), 0);
  EXPECT_THAT(readSettings(path_).errors, ElementsAre(HasSubstr("too long")));
}

TEST_F(SettingsFileTest, AFileThatMayNotBeReadIsAMistake) {
  folder_.prepare(".config/quillback/config.toml");
  ASSERT_EQ(::symlink("config.toml", path_.c_str()), 0);  // to itself: nobody can read that
  EXPECT_THAT(readSettings(path_).errors, ElementsAre(HasSubstr("cannot be read")));
}

}  // namespace
}  // namespace voxtrel::quillback
