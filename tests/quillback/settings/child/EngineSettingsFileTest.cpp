#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/settings/ConfigManager.h"
#include "quillback/settings/EngineSettings.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class EngineSettingsFileTest : public testing::Test {
 protected:
  void write(std::string_view text) { folder_.write(".config/quillback/config.toml", text); }

  ScratchFolder folder_;
  const std::string path_ = ConfigManager(folder_.path().string()).configPath();
};

TEST_F(EngineSettingsFileTest, AMissingFileIsNoMistake) {
  EXPECT_THAT(readEngineSettings(path_).errors, IsEmpty());
  folder_.write(".config/quillback", "a file where a folder should be");
  EXPECT_THAT(readEngineSettings(path_).errors, IsEmpty());
}

TEST_F(EngineSettingsFileTest, IsReadWhole) {
  write("# " + std::string(10'000, 'x') + "\n[model]\nlanguage = \"it\"\n");
  EXPECT_EQ(readEngineSettings(path_).settings.language, "it");
}

TEST_F(EngineSettingsFileTest, AFolderIsNoFile) {
  folder_.prepare(".config/quillback/config.toml/x");
  EXPECT_THAT(readEngineSettings(path_).errors, ElementsAre(HasSubstr("regular file")));
}

TEST_F(EngineSettingsFileTest, APipeIsNoFileAndIsNotWaitedFor) {
  folder_.prepare(".config/quillback/config.toml");
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_THAT(readEngineSettings(path_).errors, ElementsAre(HasSubstr("regular file")));
}

TEST_F(EngineSettingsFileTest, AHundredMegabytesAreNoSettings) {
  write("");
  ASSERT_EQ(::truncate(path_.c_str(), 100'000'000), 0);
  EXPECT_THAT(readEngineSettings(path_).errors, ElementsAre(HasSubstr("too long")));
}

TEST_F(EngineSettingsFileTest, AFileThatIsNotUtf8IsAMistakeAndGivesTheDefaults) {
  write("[model]\nlanguage = \"it\"\n# caf\xE9\n[output]\ninsert = 'none'\n");
  const SettingsReading reading = readEngineSettings(path_);
  EXPECT_THAT(reading.errors, ElementsAre(HasSubstr("not UTF-8")));
  EXPECT_EQ(reading.settings.language, "auto");
  EXPECT_EQ(reading.settings.insert, EngineSettings::Insert::type);
}

TEST_F(EngineSettingsFileTest, AFileThatMayNotBeReadIsAMistake) {
  folder_.prepare(".config/quillback/config.toml");
  ASSERT_EQ(::symlink("config.toml", path_.c_str()), 0);  // to itself
  EXPECT_THAT(readEngineSettings(path_).errors, ElementsAre(HasSubstr("cannot be read")));
}

}  // namespace
}  // namespace voxtrel::quillback
