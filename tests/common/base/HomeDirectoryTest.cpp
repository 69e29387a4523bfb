#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "common/base/HomeDirectory.h"

namespace voxtrel {
namespace {

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
