#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "support/WritingSettings.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

// Each step runs whatever the one before it did, so anything in that place is moved.
TEST_F(WritingSettings, MovesWhateverStandsInTheTemporaryFilesPlace) {
  home.write(kConfig, kOld);
  home.write(".config/quillback/config.toml.tmp/file", "x");
  write();
  EXPECT_FALSE(isThere(kTemporary));
  EXPECT_EQ(contentOf(".config/quillback/config.toml/file"), "x");
  EXPECT_EQ(config.readSettings(), ModelSettings());
  write();
  expectFresh();
}

TEST_F(WritingSettings, DoesNotWaitForAFifoInTheTemporaryFilesPlace) {
  ASSERT_EQ(::mkfifo(home.prepare(kTemporary).c_str(), 0600), 0);
  write();
  EXPECT_EQ(config.readSettings(), ModelSettings());
  write();
  expectFresh();
}

TEST_F(WritingSettings, LeavesEverythingAsItIsInAFolderThatCannotBeWritten) {
  home.write(kConfig, kOld);
  const PlainUser user(home.path());
  fs::permissions(at(kConfig).parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
  write();
  EXPECT_EQ(contentOf(kConfig), kOld);
  EXPECT_FALSE(isThere(kTemporary));
}

TEST_F(WritingSettings, OverwritesNoOldFileThatCannotBeRemoved) {
  home.write(kConfig, kOld);
  home.write(kTemporary, "");
  const PlainUser user(home.path());
  fs::permissions(at(kConfig).parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
  write();
  EXPECT_EQ(contentOf(kConfig), kOld);
  EXPECT_EQ(contentOf(kTemporary), "");
}

TEST_F(WritingSettings, RemovesALinkToNowhereInTheTemporaryFilesPlace) {
  home.write(kConfig, kOld);
  fs::create_symlink("gone/nowhere", at(kTemporary));
  write();
  EXPECT_FALSE(isThere(kTemporary));
  EXPECT_EQ(config.readSettings(), kFrench);
}

TEST_F(WritingSettings, DoesNothingWhereAFileStandsInTheFoldersPlace) {
  home.write(".config", "a file");
  write();
  EXPECT_EQ(contentOf(".config"), "a file");
  const ConfigManager tooLong("/" + std::string(5000, 'x'));
  tooLong.writeSettings(kFrench);
  const ConfigManager impossible("/proc/self/nowhere");
  impossible.writeSettings(kFrench);
}

TEST_F(WritingSettings, GivesTheFileTheUsualRights) {
  const mode_t before = ::umask(022);
  write();
  ::umask(before);
  EXPECT_EQ(fs::status(at(kConfig)).permissions(), fs::perms::owner_read | fs::perms::owner_write |
                                                       fs::perms::group_read |
                                                       fs::perms::others_read);
}

TEST_F(WritingSettings, NeverWritesThroughALinkInTheTemporaryFilesPlace) {
  home.write("elsewhere.toml", "old");
  fs::create_symlink(at("elsewhere.toml"), home.prepare(kTemporary));
  write();
  EXPECT_EQ(contentOf("elsewhere.toml"), "old");
  expectFresh();
}

TEST_F(WritingSettings, NeitherWritesToNorRemovesADeviceBehindALinkInTheTemporaryFilesPlace) {
  fs::create_symlink("/dev/full", home.prepare(kTemporary));
  write();
  EXPECT_TRUE(fs::exists("/dev/full"));
  expectFresh();
}

}  // namespace
}  // namespace voxtrel
