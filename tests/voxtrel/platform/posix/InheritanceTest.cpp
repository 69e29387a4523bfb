#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>

#include "voxtrel/platform/posix/ChildTest.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

void doNothing(int) {}

/// Signal settings that the application may have when it starts the engine.
class UnusualSignals {
 public:
  UnusualSignals() {
    for (const int signal : {SIGINT, SIGPIPE, SIGHUP, SIGCHLD}) set(signal, SIG_IGN);
    for (const int signal : {SIGUSR1, SIGTERM, SIGRTMIN}) set(signal, doNothing);
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &mask_);
  }
  ~UnusualSignals() {
    for (const auto& [signal, action] : actions_) ::sigaction(signal, &action, nullptr);
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
  }
  UnusualSignals(const UnusualSignals&) = delete;
  UnusualSignals& operator=(const UnusualSignals&) = delete;

 private:
  void set(int signal, void (*handler)(int)) {
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = handler;
    ::sigaction(signal, &action, &before);
    actions_.emplace_back(signal, before);
  }

  std::vector<std::pair<int, struct sigaction>> actions_;
  sigset_t mask_;
};

/// Closes the standard streams, as some launchers do.
class ClosedStreams {
 public:
  explicit ClosedStreams(const std::vector<int>& numbers) {
    for (const int number : numbers) {
      kept_.emplace_back(number, ::fcntl(number, F_DUPFD_CLOEXEC, 100));
      ::close(number);
    }
  }
  ~ClosedStreams() {
    for (const auto& [number, copy] : kept_) {
      ::dup2(copy, number);
      ::close(copy);
    }
  }
  ClosedStreams(const ClosedStreams&) = delete;
  ClosedStreams& operator=(const ClosedStreams&) = delete;

 private:
  std::vector<std::pair<int, int>> kept_;
};

class InheritanceTest : public ChildTest {
 protected:
  /// The value of `key` in the report of a new engine.
  std::string reported(const std::string& key) {
    return valueIn(outputOf({"--report", "--exit", "0"}), key);
  }

  static std::string valueIn(const std::string& report, const std::string& key) {
    const std::size_t begin = report.find(key + ": ");
    if (begin == std::string::npos) return "(nothing in " + report + ')';
    const std::size_t value = begin + key.size() + 2;
    return report.substr(value, report.find('\n', value) - value);
  }
};

TEST_F(InheritanceTest, NoDescriptorButTheStandardThreeReachesTheChild) {
  std::vector<int> leaks;
  leaks.reserve(51);
  for (int i = 0; i < 50; ++i) leaks.push_back(::dup(STDERR_FILENO));
  leaks.push_back(::fcntl(STDERR_FILENO, F_DUPFD, 700));
  EXPECT_EQ(reported("descriptors"), "0 1 2");
  for (const int leak : leaks) ::close(leak);
}

TEST_F(InheritanceTest, SimultaneousChildrenDoNotGetEachOthersPipes) {
  std::vector<StartedChild> children;
  children.reserve(20);
  for (int i = 0; i < 20; ++i) children.push_back(engine({"--report", "--wait"}));
  for (const StartedChild& child : children) {
    ASSERT_TRUE(eventually([&] { return child.record->contains("caught:"); }));
    EXPECT_EQ(valueIn(child.record->output(), "descriptors"), "0 1 2");
  }
}

TEST_F(InheritanceTest, TheChildHasDefaultSignalsWhateverTheParentDidToItsOwn) {
  std::string report;
  {
    const UnusualSignals unusual;
    report = outputOf({"--report", "--exit", "0"});
  }
  EXPECT_EQ(valueIn(report, "blocked"), "none");
  EXPECT_EQ(valueIn(report, "ignored"), "none");
  EXPECT_EQ(valueIn(report, "caught"), "none");
}

TEST_F(InheritanceTest, StatusesAreKeptWhereSigchldIsIgnored) {
  const UnusualSignals unusual;
  EXPECT_EQ(statusOf({"--exit", "3"}), 3);
  EXPECT_EQ(statusOf({"--signal", "SEGV"}), SIGSEGV);
}

TEST_F(InheritanceTest, StandardInputIsTheParents) {
  std::error_code error;
  const std::string own = fs::read_symlink("/proc/self/fd/0", error).string();
  EXPECT_EQ(reported("stdin"), own);
}

TEST_F(InheritanceTest, AClosedStandardInputBecomesTheNullDevice) {
  std::string report;
  {
    const ClosedStreams closed({0});
    report = outputOf({"--report", "--exit", "0"});
  }
  EXPECT_EQ(valueIn(report, "stdin"), "/dev/null");
  EXPECT_EQ(valueIn(report, "descriptors"), "0 1 2");
}

TEST_F(InheritanceTest, AParentWithoutAnyStandardStreamCanStartTheChild) {
  std::string report;
  std::string failure;
  {
    const ClosedStreams closed({0, 1, 2});
    report = outputOf({"--report", "--error", "end", "--exit", "0"});
    failure = start("/no/such/file", {}).failure;
  }
  EXPECT_EQ(valueIn(report, "stdin"), "/dev/null");
  EXPECT_EQ(valueIn(report, "descriptors"), "0 1 2");
  EXPECT_TRUE(report.ends_with("\nend\n"));
  EXPECT_EQ(failure, "Cannot start /no/such/file: No such file or directory");
}

TEST_F(InheritanceTest, ArgumentsArriveAsTheyAreWithThePathInFront) {
  const std::string report =
      outputOf({"--print", "two  words", "--print", "\xc3\xbc\xff", "--report", "--exit", "0"});
  EXPECT_NE(report.find(std::string("argument: ") + SCRIPTED_ENGINE +
                        "\nargument: run\nargument: --print\nargument: two  words\n"
                        "argument: --print\nargument: \xc3\xbc\xff\nargument: --report\n"),
            std::string::npos)
      << report;
}

TEST_F(InheritanceTest, TheWorkingDirectoryIsTheParentsUnlessOneIsNamed) {
  EXPECT_EQ(reported("directory"), fs::current_path().string());
  const StartedChild child = start(SCRIPTED_ENGINE, {"run", "--report", "--exit", "0"}, "/proc");
  EXPECT_EQ(child.record->waitForStatus(), 0);
  EXPECT_EQ(valueIn(child.record->output(), "directory"), "/proc");
}

}  // namespace
}  // namespace voxtrel
