#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
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

namespace {

/// What was given to fsync, as long as it was open.
std::vector<std::string> syncedPaths;

}  // namespace

/// Notes what is synced. The linker prefers it to the library's.
extern "C" int fsync(int file) {
  syncedPaths.push_back(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file)));
  return static_cast<int>(::syscall(SYS_fsync, file));
}

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

TEST_F(WritingSettings, MakesTheFoldersAndTheFile) {
  write();
  expectFresh();
}

TEST_F(WritingSettings, KeepsTheOtherLinesOfTheFile) {
  home.write(kConfig, kOld);
  write();
  EXPECT_EQ(contentOf(kConfig),
            "[model]\ntranslate = true\nwhisper_model = \"large-v3\"\nlanguage = \"fr\"\n# mine\n"
            "\n[audio]\nhotkey = 'f6'\nhotkey_code = 97");
  EXPECT_FALSE(isThere(kTemporary));
  EXPECT_EQ(config.readSettings(), kFrench);
  EXPECT_EQ(config.readWhisperModel(), "large-v3");
}

TEST_F(WritingSettings, WritesAgainOverWhatItWrote) {
  write();
  config.writeSettings(ModelSettings());
  EXPECT_EQ(config.readSettings(), ModelSettings());
  write();
  expectFresh();
}

TEST_F(WritingSettings, StartsFromNothingWhereTheFileIsNotUtf8) {
  home.write(kConfig, std::string(kOld) + "# caf\xE9\n");
  write();
  expectFresh();
}

TEST_F(WritingSettings, StartsFromNothingWhereTheFileCannotBeRead) {
  home.write(kConfig, kOld);
  const PlainUser user(home.path());
  fs::permissions(at(kConfig), fs::perms::none);
  write();
  expectFresh();
}

TEST_F(WritingSettings, ReplacesTheFileAtTheEndOfLinksAndKeepsThem) {
  home.write("dotfiles/engine.toml", kOld);
  fs::permissions(at("dotfiles/engine.toml"), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("engine.toml", at("dotfiles/link.toml"));
  fs::create_symlink("../../dotfiles/link.toml", home.prepare(kConfig));
  write();
  EXPECT_EQ(fs::read_symlink(at(kConfig)), "../../dotfiles/link.toml");
  EXPECT_EQ(fs::read_symlink(at("dotfiles/link.toml")), "engine.toml");
  EXPECT_NE(contentOf("dotfiles/engine.toml").find("# mine"), std::string::npos);
  EXPECT_EQ(modeOf("dotfiles/engine.toml"), 0600U);
  EXPECT_EQ(config.readSettings(), kFrench);
  EXPECT_FALSE(isThere(kTemporary));
  EXPECT_FALSE(isThere("dotfiles/engine.toml.tmp"));
}

TEST_F(WritingSettings, MakesTheFileThatALinkNames) {
  fs::create_directories(at("dotfiles"));
  fs::create_symlink("../../dotfiles/engine.toml", home.prepare(kConfig));
  write();
  EXPECT_TRUE(fs::is_symlink(at(kConfig)));
  EXPECT_EQ(contentOf("dotfiles/engine.toml"), kFresh);
}

TEST_F(WritingSettings, PutsAFileInThePlaceOfALinkWhereNoFileCanBe) {
  fs::create_directories(at("folder/inside"));
  for (const fs::path& target :
       {fs::path("gone/nowhere"), fs::path("config.toml"), at("folder"), fs::path("/dev/full")}) {
    fs::remove(at(kConfig));
    fs::create_symlink(target, home.prepare(kConfig));
    write();
    expectFresh();
  }
  EXPECT_TRUE(isThere("folder/inside"));
}

TEST_F(WritingSettings, LosesTheLinkAndNotItsTargetWhereTheNewFileDoesNotFit) {
  home.write("dotfiles/engine.toml", kOld);
  fs::create_symlink(at("dotfiles/engine.toml"), home.prepare(kConfig));
  {
    const FileSizeLimit limit(20);
    write();
  }
  EXPECT_FALSE(isThere(kConfig));
  EXPECT_EQ(contentOf("dotfiles/engine.toml"), kOld);
  EXPECT_FALSE(isThere("dotfiles/engine.toml.tmp"));
  EXPECT_EQ(config.readSettings(), ModelSettings());
}

TEST_F(WritingSettings, KeepsTheModeOfTheFile) {
  for (const unsigned mode : {0600U, 0640U, 0666U}) {
    home.write(kConfig, kOld);
    ASSERT_EQ(::chmod(at(kConfig).c_str(), mode), 0);
    write();
    EXPECT_EQ(modeOf(kConfig), mode);
  }
}

TEST_F(WritingSettings, KeepsTheOwnerOfTheFile) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root may give a file away";
  home.write(kConfig, kOld);
  ASSERT_EQ(::chown(at(kConfig).c_str(), 1234, 5678), 0);
  write();
  struct stat status {};
  ASSERT_EQ(::stat(at(kConfig).c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 1234U);
  EXPECT_EQ(status.st_gid, 5678U);
}

TEST_F(WritingSettings, TakesTheRightsOfAGroupThatCannotBeKept) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root may give a file away";
  home.write(kConfig, kOld);
  const PlainUser user(home.path());
  ASSERT_EQ(::seteuid(0), 0);
  ASSERT_EQ(::chown(at(kConfig).c_str(), 65534, 5678), 0);
  ASSERT_EQ(::chmod(at(kConfig).c_str(), 0660), 0);
  ASSERT_EQ(::seteuid(65534), 0);
  write();
  EXPECT_EQ(modeOf(kConfig), 0600U);
}

TEST_F(WritingSettings, SyncsTheNewFileAndItsFolder) {
  home.write(kConfig, kOld);
  syncedPaths.clear();
  write();
  EXPECT_EQ(syncedPaths, (std::vector<std::string>{at(kTemporary), at(kConfig).parent_path()}));
}

TEST_F(WritingSettings, PutsAFileInThePlaceOfAFolderWithAllThatIsInIt) {
  home.write(".config/quillback/config.toml/deep/file", "x");
  home.write("outside/file", "kept");
  fs::create_directory_symlink(at("outside"), at(kConfig) / "link");
  write();
  expectFresh();
  EXPECT_EQ(contentOf("outside/file"), "kept");
}

TEST_F(WritingSettings, PutsAFileInThePlaceOfAFifo) {
  ASSERT_EQ(::mkfifo(home.prepare(kConfig).c_str(), 0600), 0);
  write();
  expectFresh();
}

TEST_F(WritingSettings, WritesThroughAFolderThatIsALink) {
  fs::create_directories(at("dotfiles"));
  fs::create_directory_symlink(at("dotfiles"), at(".config"));
  write();
  expectFresh();
  EXPECT_TRUE(isThere("dotfiles/quillback/config.toml"));
}

TEST_F(WritingSettings, OverwritesATemporaryFileThatWasLeftBehind) {
  home.write(kTemporary, std::string(10'000, 'x'));
  write();
  expectFresh();
}

TEST_F(WritingSettings, LosesTheOldFileWhereTheNewOneDoesNotFit) {
  home.write(kConfig, kOld);
  {
    const FileSizeLimit limit(20);
    write();
  }
  EXPECT_FALSE(isThere(kConfig));
  EXPECT_FALSE(isThere(kTemporary));
  EXPECT_EQ(config.readSettings(), ModelSettings());
  write();
  expectFresh();
}

TEST_F(WritingSettings, LeavesNothingHalfWrittenInALargeFileEither) {
  home.write(kConfig, "[model]\n" + std::string(300'000, '#') + "\n");
  {
    const FileSizeLimit limit(200'000);
    write();
  }
  EXPECT_FALSE(isThere(kConfig));
  EXPECT_FALSE(isThere(kTemporary));
}

}  // namespace
}  // namespace voxtrel
