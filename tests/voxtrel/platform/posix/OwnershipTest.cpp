#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <thread>

#include "common/posix/Pipe.h"
#include "voxtrel/platform/posix/ChildTest.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

/// Starts a child without the launcher.
pid_t startForeignChild(std::vector<std::string> words, int standardOutput = STDOUT_FILENO) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, standardOutput, STDOUT_FILENO);
  pid_t pid = -1;
  EXPECT_EQ(::posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environ), 0);
  ::posix_spawn_file_actions_destroy(&actions);
  return pid;
}

/// The exit code or signal of this process's child `pid` if it ends within `limit`.
std::optional<int> reapWithin(pid_t pid, std::chrono::milliseconds limit) {
  int status = 0;
  if (!eventually([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, limit)) return {};
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

/// The process id in a report, read from `descriptor`.
pid_t readReportedPid(int descriptor) {
  std::string report;
  char byte = 0;
  while (!report.ends_with("\ncaught: ") && ::read(descriptor, &byte, 1) == 1) report += byte;
  const std::size_t begin = report.find("pid: ");
  return begin == std::string::npos ? -1 : std::stoi(report.substr(begin + 5));
}

std::size_t countEntries(const char* folder) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

using OwnershipTest = ChildTest;

TEST_F(OwnershipTest, AChildIsGoneWithinASecondOfItsParentsViolentDeath) {
  // This process adopts orphans, so it can reap them and see how they ended.
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  Pipe output = Pipe::open().value();
  const pid_t owner = startForeignChild({ENGINE_OWNER, SCRIPTED_ENGINE}, output.writeEnd.get());
  output.writeEnd.reset();
  const pid_t orphan = readReportedPid(output.readEnd.get());
  ASSERT_GT(orphan, 0);
  ASSERT_EQ(::kill(orphan, 0), 0);
  ::kill(owner, SIGKILL);
  EXPECT_EQ(reapWithin(owner, std::chrono::seconds(20)), SIGKILL);
  EXPECT_EQ(reapWithin(orphan, std::chrono::seconds(1)), SIGKILL);
  // Where a guard ended it, that is an orphan now, too.
  EXPECT_TRUE(eventually([] { return ::waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }));
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST_F(OwnershipTest, AChildRunsOnWhenTheThreadThatStartedItEnds) {
  StartedChild child;
  std::thread([&] {
    child = engine({"--print", "started", "--on-term", "7 0 asked to end"});
  }).join();
  ASSERT_TRUE(eventually([&] { return child.record->contains("started"); }));
  EXPECT_FALSE(
      eventually([&] { return !child.process->isRunning(); }, std::chrono::milliseconds(200)));
  child.process->terminate();
  EXPECT_EQ(child.record->waitForStatus(), 7);
  EXPECT_EQ(child.record->output(), "started\nasked to end\n");
}

TEST_F(OwnershipTest, ChildrenOfOthersKeepTheirStatusesAndOursAreNotMissed) {
  constexpr int kRounds = 40;
  std::vector<pid_t> foreign;
  std::vector<StartedChild> own;
  for (int i = 0; i < kRounds; ++i) {
    foreign.push_back(startForeignChild({SCRIPTED_ENGINE, "run", "--exit", std::to_string(i)}));
    own.push_back(engine({"--exit", std::to_string(100 + i)}));
  }
  for (int i = 0; i < kRounds; ++i) {
    const auto index = static_cast<std::size_t>(i);
    EXPECT_EQ(own[index].record->waitForStatus(), 100 + i);
    EXPECT_EQ(reapWithin(foreign[index], std::chrono::seconds(20)), i);
  }
}

TEST_F(OwnershipTest, StartsAtTheSameMomentDoNotMixUpTheirChildren) {
  constexpr int kThreads = 8;
  constexpr int kStarts = 15;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([this, t] {
      for (int i = 0; i < kStarts; ++i) {
        const std::string code = std::to_string(t * kStarts + i);
        const StartedChild child = engine({"--print", "I am " + code, "--exit", code});
        EXPECT_EQ(child.record->waitForStatus(), t * kStarts + i);
        EXPECT_EQ(child.record->output(), "I am " + code + '\n');
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(OwnershipTest, AThousandStartsAndStopsLeaveNothingBehind) {
  std::thread([] {}).join();  // a sanitizer starts its own thread with the first one
  const auto isAsBefore = [descriptors = countEntries("/proc/self/fd"),
                           threads = countEntries("/proc/self/task")] {
    return countEntries("/proc/self/fd") == descriptors &&
           countEntries("/proc/self/task") == threads;
  };
  const auto cycle = [this](int i) {
    StartedChild child = engine(i % 3 == 0 ? Words{"--exit", "0"} : Words{});
    if (i % 3 == 1) child.process->terminate();
    if (i % 3 == 2) child.process.reset();
    ASSERT_TRUE(child.record->waitForStatus().has_value());
  };
  for (int i = 0; i < 1000; ++i) cycle(i);
  EXPECT_TRUE(eventually(isAsBefore)) << countEntries("/proc/self/fd") << " descriptors, "
                                      << countEntries("/proc/self/task") << " threads are left";
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
  EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace voxtrel
