#import <Foundation/Foundation.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>
#include <utility>

#include "common/posix/Pipe.h"
#include "support/macos/RunLoop.h"
#include "voxtrel/platform/macos/process/GuardProcess.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace voxtrel::testing {
namespace {

/// A program that runs until it is ended.
pid_t startSleeper() {
  std::array<std::string, 2> words{"/bin/sleep", "60"};
  const std::array<char*, 3> arguments{words[0].data(), words[1].data(), nullptr};
  pid_t pid = 0;
  EXPECT_EQ(::posix_spawn(&pid, arguments[0], nullptr, nullptr, arguments.data(), environ), 0);
  return pid;
}

bool ends(pid_t child) {
  return runUntil([child] { return ::waitpid(child, nullptr, WNOHANG) == child; });
}

std::size_t countDescriptors() {
  return [NSFileManager.defaultManager contentsOfDirectoryAtPath:@"/dev/fd" error:nil].count;
}

TEST(GuardProcessTest, LetsNoChildStartThatItCannotKnow) {
  Pipe pipe = Pipe::open().value();
  pipe.readEnd.reset();
  const pid_t somebody = startSleeper();
  {
    GuardProcess guard(somebody, std::move(pipe.writeEnd));
    errno = 0;
    EXPECT_FALSE(guard.attach(::getppid()));
    EXPECT_EQ(errno, EPIPE);
  }
  EXPECT_EQ(::kill(somebody, 0), -1) << "the guard's process is ended and reaped";
}

TEST(GuardProcessTest, LeavesTheChildAloneOnceItIsGone) {
  auto guard = GuardProcess::start();
  ASSERT_TRUE(guard.has_value());
  const Pipe attached = Pipe::open().value();
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(10);
    const bool isAttached = (*guard)->attach(::getppid());
    [[maybe_unused]] const ssize_t written = ::write(attached.writeEnd.get(), &isAttached, 1);
    for (;;) ::pause();
  }
  bool isAttached = false;
  ASSERT_EQ(::read(attached.readEnd.get(), &isAttached, 1), 1);
  ASSERT_TRUE(isAttached);
  guard->reset();
  runFor(std::chrono::milliseconds(100));
  EXPECT_EQ(::waitpid(child, nullptr, WNOHANG), 0) << "it still runs";
  ::kill(child, SIGKILL);
  EXPECT_TRUE(ends(child));
}

TEST(GuardProcessTest, AThousandGuardsLeaveNothingBehind) {
  const std::size_t before = countDescriptors();
  for (int round = 0; round < 1000; ++round) {
    const auto guard = GuardProcess::start();
    ASSERT_TRUE(guard.has_value()) << round;
  }
  EXPECT_EQ(countDescriptors(), before);
}

}  // namespace
}  // namespace voxtrel::testing
