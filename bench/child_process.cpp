// Measures what the child-process adapter adds to the system's own calls: from asking for a child to
// its program running, and from a child's end to knowing of it. Both kinds take turns, so that the
// machine's moods meet both. Prints "key: value" lines; times are medians.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "common/posix/Pipe.h"
#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"

extern char** environ;

namespace voxtrel {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr int kRounds = 1000;
constexpr int kWarmUpRounds = 20;

struct Times {
  std::vector<double> startUs;
  std::vector<double> endUs;
  std::vector<double> reportedUs;  ///< until onExit was called; ours alone
};

enum class Caller { mainThread, otherThread };

double microsecondsSince(Clock::time_point begin) {
  return Microseconds(Clock::now() - begin).count();
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

/// The yardstick: a pipe, posix_spawn, SIGKILL, waitpid.
void measureBare(Times& times) {
  std::string path = SCRIPTED_ENGINE;
  std::string mode = "run";
  std::string command = "--wait";
  std::array<char*, 4> arguments{path.data(), mode.data(), command.data(), nullptr};
  const auto begin = Clock::now();
  const Pipe output = Pipe::open().value();
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, output.writeEnd.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, output.writeEnd.get(), STDERR_FILENO);
  pid_t pid = -1;
  if (::posix_spawn(&pid, path.c_str(), &actions, nullptr, arguments.data(), environ) != 0) {
    std::abort();
  }
  times.startUs.push_back(microsecondsSince(begin));
  ::posix_spawn_file_actions_destroy(&actions);
  ::usleep(3000);  // the program gets past its own start, as in the other measurement
  const auto end = Clock::now();
  ::kill(pid, SIGKILL);
  ::waitpid(pid, nullptr, 0);
  times.endUs.push_back(microsecondsSince(end));
}

/// Ours.
void measureAdapter(PosixChildProcessLauncher& launcher, Caller caller, Times& times) {
  std::atomic<bool> isReported = false;
  Clock::time_point reported;
  ChildOptions options;
  options.executable = SCRIPTED_ENGINE;
  options.arguments = {"run", "--wait"};
  options.onOutput = [](std::string_view) {};
  options.onExit = [&](int) {
    reported = Clock::now();
    isReported = true;
    isReported.notify_one();
  };
  std::shared_ptr<ChildProcess> child;
  const auto start = [&] {
    const auto begin = Clock::now();
    auto result = launcher.start(std::move(options));
    times.startUs.push_back(microsecondsSince(begin));
    child = std::move(*result);
  };
  if (caller == Caller::mainThread) {
    start();
  } else {
    std::thread(start).join();
  }
  ::usleep(3000);
  const auto end = Clock::now();
  child->kill();
  child->waitUntilExit();
  times.endUs.push_back(microsecondsSince(end));
  isReported.wait(false);
  times.reportedUs.push_back(Microseconds(reported - end).count());
}

void print(const char* what, double ours, const char* yardstick, double theirs) {
  std::printf("%s us: %.1f\n%s us: %.1f\n%s ratio: %.2f\n", what, ours, yardstick, theirs, what,
              ours / theirs);
}

void run() {
  PosixChildProcessLauncher launcher;
  Times bare;
  Times adapter;
  Times elsewhere;
  for (int round = 0; round < kRounds + kWarmUpRounds; ++round) {
    if (round == kWarmUpRounds) bare = adapter = elsewhere = {};
    measureBare(bare);
    measureAdapter(launcher, Caller::mainThread, adapter);
    measureAdapter(launcher, Caller::otherThread, elsewhere);
  }
  std::printf("rounds: %d\n", kRounds);
  const double spawn = median(bare.startUs);
  const double wait = median(bare.endUs);
  print("start to exec", median(adapter.startUs), "posix_spawn", spawn);
  print("start to exec off the main thread", median(elsewhere.startUs), "posix_spawn", spawn);
  print("kill to waitUntilExit", median(adapter.endUs), "kill to waitpid", wait);
  print("kill to onExit", median(adapter.reportedUs), "kill to waitpid", wait);
}

}  // namespace
}  // namespace voxtrel

int main() {
  voxtrel::run();
}
