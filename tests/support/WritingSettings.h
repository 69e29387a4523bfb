#pragma once

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

#include "common/settings/ConfigManager.h"
#include "support/ScratchFolder.h"

namespace voxtrel {

inline constexpr const char* kConfig = ".config/quillback/config.toml";
inline constexpr const char* kTemporary = ".config/quillback/config.toml.tmp";
inline constexpr const char* kOld = "[model]\nlanguage = \"de\"\n# mine\n";
inline constexpr const char* kFresh =
    "\n[model]\ntranslate = true\nlanguage = \"fr\"\nwhisper_model = \"large-v3\"\n\n[audio]\n"
    "hotkey = 'f6'\nhotkey_code = 97";
inline const ModelSettings kFrench{"fr", true, "f6", "large-v3"};

/// Gives the test the rights of a plain user, even if root runs it.
class PlainUser {
 public:
  explicit PlainUser(const std::filesystem::path& home) {
    if (::geteuid() != 0) return;
    const auto give = [](const std::filesystem::path& path) {
      return ::lchown(path.c_str(), kNobody, kNobody);
    };
    EXPECT_EQ(give(home), 0);
    for (const auto& item : std::filesystem::recursive_directory_iterator(home))
      EXPECT_EQ(give(item.path()), 0);
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
    std::filesystem::permissions(at(kConfig).parent_path(), std::filesystem::perms::owner_all,
                                 ignored);
  }

  std::filesystem::path at(const char* path) const { return home.path() / path; }
  bool isThere(const char* path) const {
    return std::filesystem::exists(std::filesystem::symlink_status(at(path)));
  }
  std::string contentOf(const char* path) const {
    std::ifstream file(at(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  unsigned modeOf(const char* path) const {
    return static_cast<unsigned>(std::filesystem::status(at(path)).permissions());
  }
  void write() const { config.writeSettings(kFrench); }
  void expectFresh() const {
    ASSERT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(at(kConfig))));
    EXPECT_EQ(contentOf(kConfig), kFresh);
    EXPECT_FALSE(isThere(kTemporary));
    EXPECT_EQ(config.readSettings(), kFrench);
  }

  ScratchFolder home{};
  ConfigManager config{home.path().string()};
};

}  // namespace voxtrel
