// What the application finds out about itself: its folder, its user's home.
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include "common/base/HomeDirectory.h"
#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "voxtrel/platform/posix/ExecutablePath.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

TEST(ExecutableFolder, FindsAFileBesideTheApplicationAndNothingElse) {
  std::string pattern = (fs::temp_directory_path() / "voxtrel-bundle-XXXXXX").string();
  const fs::path folder = ::mkdtemp(pattern.data());
  const ExecutableFolder bundle((folder / "voxtrel").string());
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), std::nullopt);
  fs::create_directory(folder / "quillback");
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), std::nullopt) << "a folder is no executable";
  fs::remove(folder / "quillback");
  std::ofstream(folder / "quillback") << "not executable: its start will say so";
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), (folder / "quillback").string());
  fs::remove_all(folder);
}

TEST(ExecutablePath, IsThisProgramWithLinksFollowed) {
  EXPECT_EQ(executablePath(), fs::canonical("/proc/self/exe").string());
  EXPECT_TRUE(ExecutableFolder(executablePath()).auxiliaryExecutable("child_tests").has_value());
}

class HomeDirectoryTest : public testing::Test {
 public:
  HomeDirectoryTest() {
    if (const char* home = std::getenv("HOME")) before_ = home;
  }
  HomeDirectoryTest(const HomeDirectoryTest&) = delete;
  HomeDirectoryTest& operator=(const HomeDirectoryTest&) = delete;
  ~HomeDirectoryTest() override {
    before_ ? ::setenv("HOME", before_->c_str(), 1) : ::unsetenv("HOME");
  }

 private:
  std::optional<std::string> before_;
};

TEST_F(HomeDirectoryTest, IsTheVariableWithoutTrailingSlash) {
  ::setenv("HOME", "/home/someone", 1);
  EXPECT_EQ(homeDirectory(), "/home/someone");
  ::setenv("HOME", "/home/someone//", 1);
  EXPECT_EQ(homeDirectory(), "/home/someone");
  ::setenv("HOME", "/", 1);
  EXPECT_EQ(homeDirectory(), "");
}

TEST_F(HomeDirectoryTest, ComesFromTheUserDatabaseWhereTheVariableSaysNothingUsable) {
  const std::string known = ::getpwuid(::getuid())->pw_dir;
  ::unsetenv("HOME");
  EXPECT_EQ(homeDirectory(), known);
  for (const char* useless : {"", "relative/path", "~"}) {
    ::setenv("HOME", useless, 1);
    EXPECT_EQ(homeDirectory(), known);
  }
}

}  // namespace
}  // namespace voxtrel
