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

#include "common/settings/ConfigManager.h"
#include "support/ScratchFolder.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

constexpr const char* kConfig = ".config/quillback/config.toml";
constexpr const char* kTemporary = ".config/quillback/config.toml.tmp";
constexpr const char* kOld = "[model]\nlanguage = \"de\"\n# mine\n";
constexpr const char* kFresh =
    "\n[model]\ntranslate = true\nlanguage = \"fr\"\nwhisper_model = \"large-v3\"\n\n[audio]\n"
    "hotkey = 'f6'\nhotkey_code = 97";
const ModelSettings kFrench{"fr", true, "f6", "large-v3"};

/// Gives the test the rights of a plain user, even if root runs it.
class PlainUser {
 public:
  explicit PlainUser(const fs::path& home) {
    if (::geteuid() != 0) return;
    const auto give = [](const fs::path& path) { return ::lchown(path.c_str(), kNobody, kNobody); };
    EXPECT_EQ(give(home), 0);
    for (const auto& item : fs::recursive_directory_iterator(home)) EXPECT_EQ(give(item.path()), 0);
    isChanged_ = ::seteuid(kNobody) == 0;
    EXPECT_TRUE(isChanged_);
  }
  PlainUser(const PlainUser&) = delete;
  PlainUser& operator=(const PlainUser&) = delete;
  ~PlainUser() {
    if (!isChanged_) return;
    EXPECT_EQ(::seteuid(0), 0);
  }

 private:
  static constexpr unsigned kNobody = 65534;
  bool isChanged_ = false;
};

/// Limits the size of files to `bytes`, which has the effect of a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{bytes, old_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, oldHandler_);
  }

 private:
  rlimit old_{};
  void (*oldHandler_)(int);
};

struct WritingSettings : ::testing::Test {
  ~WritingSettings() override {
    std::error_code ignored;
    fs::permissions(at(kConfig).parent_path(), fs::perms::owner_all, ignored);
  }

  fs::path at(const char* path) const { return home.path() / path; }
  bool isThere(const char* path) const { return fs::exists(fs::symlink_status(at(path))); }
  std::string contentOf(const char* path) const {
    std::ifstream file(at(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void write() const { config.writeSettings(kFrench); }
  void expectFresh() const {
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(at(kConfig))));
    EXPECT_EQ(contentOf(kConfig), kFresh);
    EXPECT_FALSE(isThere(kTemporary));
    EXPECT_EQ(config.readSettings(), kFrench);
  }

  ScratchFolder home{};
  ConfigManager config{home.path().string()};
};

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

TEST_F(WritingSettings, PutsAFileInThePlaceOfALinkAndLeavesItsTargetAlone) {
  home.write("elsewhere.toml", kOld);
  fs::create_symlink(at("elsewhere.toml"), home.prepare(kConfig));
  write();
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(at(kConfig))));
  EXPECT_NE(contentOf(kConfig).find("# mine"), std::string::npos);
  EXPECT_EQ(contentOf("elsewhere.toml"), kOld);
}

TEST_F(WritingSettings, PutsAFileInThePlaceOfALinkToNowhere) {
  fs::create_symlink("nowhere", home.prepare(kConfig));
  write();
  expectFresh();
  EXPECT_FALSE(isThere(".config/quillback/nowhere"));
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
  EXPECT_NE(contentOf(kTemporary).find("language = \"fr\""), std::string::npos);
}

TEST_F(WritingSettings, PutsAFileInThePlaceOfALinkThatStandsInTheTemporaryFilesPlace) {
  home.write("elsewhere.toml", "old");
  for (const fs::path& target :
       {at("elsewhere.toml"), fs::path("gone/nowhere"), fs::path("/dev/full")}) {
    fs::create_symlink(target, home.prepare(kTemporary));
    write();
    expectFresh();
  }
  EXPECT_EQ(contentOf("elsewhere.toml"), "old");
  EXPECT_TRUE(fs::exists("/dev/full"));
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

TEST_F(WritingSettings, KeepsTheModeOfTheFile) {
  for (const mode_t mode : {0600U, 0640U, 0400U, 0664U}) {
    home.write(kConfig, kOld);
    ::chmod(at(kConfig).c_str(), mode);
    write();
    EXPECT_EQ(static_cast<mode_t>(fs::status(at(kConfig)).permissions()), mode);
    EXPECT_EQ(config.readSettings(), kFrench);
    fs::remove(at(kConfig));
  }
}

TEST_F(WritingSettings, KeepsTheModeOfTheFileThatALinkLedTo) {
  home.write("elsewhere.toml", kOld);
  ::chmod(at("elsewhere.toml").c_str(), 0600);
  fs::create_symlink(at("elsewhere.toml"), home.prepare(kConfig));
  write();
  EXPECT_EQ(fs::status(at(kConfig)).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(WritingSettings, KeepsTheOwnerOfTheFileWhereTheUserMayGiveIt) {
  home.write(kConfig, kOld);
  // Root may give it to anyone; others may keep only what is theirs.
  const uid_t owner = ::geteuid() == 0 ? 65534 : ::geteuid();
  ASSERT_EQ(::chown(at(kConfig).c_str(), owner, static_cast<gid_t>(-1)), 0);
  write();
  struct stat found {};
  ASSERT_EQ(::stat(at(kConfig).c_str(), &found), 0);
  EXPECT_EQ(found.st_uid, owner);
}

TEST_F(WritingSettings, GivesAFileOfAnotherOwnerToTheUserAlone) {
  if (::geteuid() != 0) return;  // the other owner's file takes root to be made
  home.write(kConfig, kOld);
  const PlainUser user(home.path());
  ASSERT_EQ(::seteuid(0), 0);
  ASSERT_EQ(::chown(at(kConfig).c_str(), 0, 0), 0);
  ::chmod(at(kConfig).c_str(), 0644);
  ASSERT_EQ(::seteuid(65534), 0);
  write();
  EXPECT_EQ(fs::status(at(kConfig)).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(config.readSettings(), kFrench);
}

}  // namespace
}  // namespace voxtrel
