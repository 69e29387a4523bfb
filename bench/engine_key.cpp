// engine_key ENGINE LISTENER: the time from a key's press until its line reaches the parent process, for
// the engine and for a minimal program that does the same. They run in turn, never together. Needs an
// X server and a sound server; bench/run_engine.py starts them.

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kRounds = 5;
constexpr int kPresses = 21;
constexpr std::uint8_t kRightSuper = 134;
constexpr std::chrono::milliseconds kPause{60};

/// A running program and the lines it prints.
/// Thread: one.  Owns: the process.
class Contender {
 public:
  explicit Contender(const char* program) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) std::exit(1);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    std::string name = program;
    std::string command = "run";
    std::array<char*, 3> words{name.data(), command.data(), nullptr};
    if (::posix_spawn(&pid_, program, &actions, nullptr, words.data(), environ) != 0) std::exit(1);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    lines_ = ends[0];
  }
  Contender(const Contender&) = delete;
  Contender& operator=(const Contender&) = delete;
  ~Contender() {
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
    ::close(lines_);
  }

  void waitFor(const std::string& line) {
    while (text_.find(line) == std::string::npos) {
      std::array<char, 4096> bytes{};
      const ssize_t count = ::read(lines_, bytes.data(), bytes.size());
      if (count <= 0) std::exit(1);
      text_.append(bytes.data(), static_cast<std::size_t>(count));
    }
    text_.erase(0, text_.find(line) + line.size());
  }

 private:
  pid_t pid_ = 0;
  int lines_ = -1;
  std::string text_;
};

void sendKey(xcb_connection_t* server, std::uint8_t kind) {
  xcb_test_fake_input(server, kind, kRightSuper, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
  xcb_flush(server);
}

void measure(xcb_connection_t* server, const char* program, bool isEngine,
             std::vector<double>& times) {
  Contender contender(program);
  contender.waitFor("Ready.");
  for (int i = 0; i < kPresses; ++i) {
    std::this_thread::sleep_for(kPause);
    const Clock::time_point begin = Clock::now();
    sendKey(server, XCB_KEY_PRESS);
    contender.waitFor("Recording...");
    times.push_back(Milliseconds(Clock::now() - begin).count());
    std::this_thread::sleep_for(kPause);
    sendKey(server, XCB_KEY_RELEASE);
    if (isEngine) contender.waitFor("Ready.");
  }
}

double median(std::vector<double>& values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

}  // namespace

int main(int argumentCount, char** arguments) {
  xcb_connection_t* server = xcb_connect(nullptr, nullptr);
  if (argumentCount != 3 || xcb_connection_has_error(server) != 0) return 1;
  std::vector<double> engine;
  std::vector<double> bare;
  for (int round = 0; round < kRounds; ++round) {
    measure(server, arguments[1], true, engine);
    measure(server, arguments[2], false, bare);
  }
  const double ours = median(engine);
  const double theirs = median(bare);
  std::printf("key down to \"Recording...\", engine: %.3f ms\n", ours);
  std::printf("key down to a line, bare listener: %.3f ms\n", theirs);
  std::printf("key down to \"Recording...\", ratio: %.2f (aim: at most 1.3)\n", ours / theirs);
  return 0;
}
