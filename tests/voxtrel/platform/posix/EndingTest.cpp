#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <future>

#include "common/posix/Pipe.h"
#include "voxtrel/platform/posix/ChildTest.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace voxtrel {
namespace {

// Of some systems; ends nothing.
#if defined(SIGINFO)
constexpr int kSigInfo = SIGINFO;
#else
constexpr int kSigInfo = 0;
#endif

using EndingTest = ChildTest;

TEST_F(EndingTest, TheStatusIsTheExitCode) {
  for (const int code : {0, 1, 3, 127, 255}) {
    EXPECT_EQ(statusOf({"--exit", std::to_string(code)}), code);
  }
}

TEST_F(EndingTest, TheStatusIsTheNumberOfTheSignalThatEndedTheChild) {
  for (int signal = 1; signal < NSIG; ++signal) {
    const bool isOfCLibrary = signal == 32 || signal == 33;
    const bool endsNothing = signal == SIGCHLD || signal == SIGCONT || signal == SIGURG ||
                             signal == SIGWINCH || signal == SIGSTOP || signal == SIGTSTP ||
                             signal == SIGTTIN || signal == SIGTTOU || signal == kSigInfo;
    if (isOfCLibrary || endsNothing) continue;
    EXPECT_EQ(statusOf({"--signal", std::to_string(signal)}), signal);
  }
}

TEST_F(EndingTest, TerminateIsSigtermAndTheChildMayExitInItsOwnWay) {
  const StartedChild child = engine({"--on-term", "7 50 bye", "--print", "ready"});
  ASSERT_TRUE(eventually([&] { return child.record->contains("ready"); }));
  EXPECT_TRUE(child.process->isRunning());
  child.process->terminate();
  child.process->waitUntilExit();
  EXPECT_FALSE(child.process->isRunning());
  EXPECT_EQ(child.record->waitForStatus(), 7);
  EXPECT_EQ(child.record->output(), "ready\nbye\n");
}

TEST_F(EndingTest, AChildThatIgnoresSigtermRunsOnUntilItIsKilled) {
  const StartedChild child =
      engine({"--ignore-term", "--print", "deaf", "--sleep", "100", "--print", "still here"});
  ASSERT_TRUE(eventually([&] { return child.record->contains("deaf"); }));
  child.process->terminate();
  ASSERT_TRUE(eventually([&] { return child.record->contains("still here"); }));
  EXPECT_TRUE(child.process->isRunning());
  child.process->kill();
  child.process->waitUntilExit();
  EXPECT_FALSE(child.process->isRunning());
  EXPECT_EQ(child.record->waitForStatus(), SIGKILL);
}

TEST_F(EndingTest, SignalsToAChildThatHasEndedGoNowhere) {
  const StartedChild child = engine({"--exit", "3"});
  child.process->waitUntilExit();
  child.process->terminate();
  child.process->kill();
  child.process->waitUntilExit();
  EXPECT_EQ(child.record->waitForStatus(), 3);
}

TEST_F(EndingTest, LettingGoOfAChildEndsIt) {
  StartedChild child = engine({"--ignore-term"});
  child.process.reset();
  EXPECT_EQ(child.record->waitForStatus(), SIGKILL);
}

TEST_F(EndingTest, AChildMayBeReleasedByItsOwnExitReport) {
  auto keeper = std::make_shared<std::shared_ptr<ChildProcess>>();
  auto done = std::make_shared<std::atomic<bool>>(false);
  ChildOptions options;
  options.executable = SCRIPTED_ENGINE;
  options.arguments = {"run"};
  options.onExit = [keeper, done](int) {
    keeper->reset();
    *done = true;
  };
  auto result = launcher_.start(std::move(options));
  *keeper = std::move(*result);
  (*keeper)->terminate();
  EXPECT_TRUE(eventually([&] { return done->load(); }));
}

TEST_F(EndingTest, TheLaunchersEndEndsItsChildrenAndWaitsForTheirReports) {
  const auto record = std::make_shared<ChildRecord>();
  auto launcher = std::make_unique<PosixChildProcessLauncher>();
  ChildOptions options;
  options.executable = SCRIPTED_ENGINE;
  options.arguments = {"run", "--ignore-term"};
  options.onExit = [record](int status) { record->setStatus(status); };
  const auto held = launcher->start(std::move(options));
  launcher.reset();
  EXPECT_EQ(record->status(), SIGKILL);
  EXPECT_FALSE((*held)->isRunning());
}

TEST_F(EndingTest, EndAndReapingDoNotWaitForTheOutputToBeTaken) {
  std::promise<void> release;
  std::atomic<bool> isTaking = false;
  std::atomic<bool> isReported = false;
  ChildOptions options;
  options.executable = SCRIPTED_ENGINE;
  options.arguments = {"run", "--print", "slow", "--exit", "0"};
  options.onOutput = [&](std::string_view) {
    isTaking = true;
    release.get_future().wait();
  };
  options.onExit = [&](int) { isReported = true; };
  const auto result = launcher_.start(std::move(options));
  const auto& child = **result;
  ASSERT_TRUE(eventually([&] { return isTaking.load() && !child.isRunning(); }));
  EXPECT_FALSE(isReported);
  release.set_value();
  EXPECT_TRUE(eventually([&] { return isReported.load(); }));
}

/// Starts ENGINE_OWNER with these as its standard input and output. Its engine inherits the input.
pid_t startOwner(int input, int output) {
  std::string owner = ENGINE_OWNER;
  std::string engine = SCRIPTED_ENGINE;
  const std::array<char*, 3> words{owner.data(), engine.data(), nullptr};
  posix_spawn_file_actions_t streams;
  ::posix_spawn_file_actions_init(&streams);
  ::posix_spawn_file_actions_adddup2(&streams, input, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&streams, output, STDOUT_FILENO);
  pid_t pid = -1;
  EXPECT_EQ(::posix_spawn(&pid, owner.c_str(), &streams, nullptr, words.data(), environ), 0);
  ::posix_spawn_file_actions_destroy(&streams);
  return pid;
}

/// Whether nobody holds the other end of a pipe that is never written to any more, within `limit`.
bool isAbandoned(const FileDescriptor& readEnd, std::chrono::milliseconds limit) {
  pollfd waiting{.fd = readEnd.get(), .events = POLLIN, .revents = 0};
  return ::poll(&waiting, 1, static_cast<int>(limit.count())) == 1;
}

TEST_F(EndingTest, AnEngineIsGoneWithinASecondOfItsApplicationsViolentDeath) {
  // Application and engine hold the other end; it closes with the last of them.
  Pipe lives = Pipe::open().value();
  Pipe output = Pipe::open().value();
  const pid_t owner = startOwner(lives.writeEnd.get(), output.writeEnd.get());
  lives.writeEnd.reset();
  output.writeEnd.reset();
  char said = 0;
  ASSERT_EQ(::read(output.readEnd.get(), &said, 1), 1) << "the engine says nothing";
  EXPECT_FALSE(isAbandoned(lives.readEnd, std::chrono::milliseconds(0)));
  ::kill(owner, SIGKILL);
  EXPECT_TRUE(isAbandoned(lives.readEnd, std::chrono::seconds(1)));
  ::waitpid(owner, nullptr, 0);
}

}  // namespace
}  // namespace voxtrel
