// What the application finds out about itself: its folder, its user's home, the signals that end
// it.
#include <gtest/gtest.h>
#include <poll.h>
#include <pwd.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include "common/base/HomeDirectory.h"
#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "voxtrel/platform/posix/ExecutablePath.h"
#include "voxtrel/platform/posix/TerminationSignals.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

bool isReadable(int descriptor) {
  pollfd event{descriptor, POLLIN, 0};
  return ::poll(&event, 1, 0) == 1;
}

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

TEST(TerminationSignals, EachArrivesAtTheDescriptorAndIsTakenOnce) {
  TerminationSignals signals;
  EXPECT_FALSE(isReadable(signals.descriptor()));
  EXPECT_EQ(signals.take(), std::nullopt);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    ::kill(::getpid(), signal);
    EXPECT_TRUE(isReadable(signals.descriptor()));
    EXPECT_EQ(signals.take(), signal);
    EXPECT_FALSE(isReadable(signals.descriptor()));
  }
}

TEST(TerminationSignals, ComeThroughAlsoWhereTheyWereIgnoredOrBlockedAndGoBackAfterwards) {
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGINT);
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto handlerBefore = ::signal(SIGHUP, SIG_IGN);
  {
    TerminationSignals signals;
    ::raise(SIGINT);
    EXPECT_EQ(signals.take(), SIGINT);
    ::raise(SIGHUP);
    EXPECT_EQ(signals.take(), SIGHUP);
  }
  EXPECT_EQ(::signal(SIGHUP, handlerBefore), SIG_IGN);
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, &before, &after);
  EXPECT_EQ(sigismember(&after, SIGINT), 1);
}

TEST(TerminationSignals, AStormOfThemNeverBlocksTheApplication) {
  TerminationSignals signals;
  for (int i = 0; i < 100'000; ++i) ::raise(SIGTERM);
  EXPECT_EQ(signals.take(), SIGTERM);
}

}  // namespace
}  // namespace voxtrel
