#pragma once

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace voxtrel::quillback::test {

/// A program that runs while this lives.
/// Thread: one.  Owns: the process.
class RunningProgram {
 public:
  explicit RunningProgram(std::vector<std::string> words, int inherited = -1) {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    if (inherited >= 0) posix_spawn_file_actions_adddup2(&actions, inherited, inherited);
    const int failed =
        posix_spawnp(&process_, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throw std::runtime_error("cannot run " + words[0]);
  }
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram() { end(SIGTERM); }

  void end(int signal) {
    if (process_ <= 0) return;
    kill(process_, signal);
    waitpid(process_, nullptr, 0);
    process_ = 0;
  }
  pid_t processId() const { return process_; }

 private:
  pid_t process_ = 0;
};

/// An X server without a screen, on a free display number, to which it sets $DISPLAY.
/// Thread: one.  Owns: the server.
class VirtualDisplay {
 public:
  explicit VirtualDisplay(const std::vector<std::string>& more = {})
      : pipe_(makePipe()), server_(words(more, pipe_[1]), pipe_[1]) {
    close(pipe_[1]);
    const std::string number = readLine(pipe_[0]);
    close(pipe_[0]);
    if (number.empty()) throw std::runtime_error("Xvfb did not start");
    setenv("DISPLAY", (":" + number).c_str(), 1);
  }

  void kill() { server_.end(SIGKILL); }
  void stop() const { ::kill(server_.processId(), SIGSTOP); }
  void resume() const { ::kill(server_.processId(), SIGCONT); }

 private:
  static std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return ends;
  }
  /// The server writes its number and the newline separately.
  static std::string readLine(int from) {
    constexpr int kStartLimitMs = 10'000;
    std::string line;
    char c = 0;
    pollfd readable{from, POLLIN, 0};
    while (poll(&readable, 1, kStartLimitMs) == 1 && read(from, &c, 1) == 1) {
      if (c == '\n') return line;
      line += c;
    }
    return "";
  }
  static std::vector<std::string> words(const std::vector<std::string>& more, int numberTo) {
    std::vector<std::string> all = {"Xvfb",     "-displayfd", std::to_string(numberTo),
                                    "-noreset", "-nolisten",  "tcp",
                                    "-screen",  "0",          "640x480x24"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  std::array<int, 2> pipe_;
  RunningProgram server_;
};

/// The output of a shell command, which must succeed.
inline std::string outputOf(const std::string& command) {
  FILE* out = popen(("timeout 20 " + command).c_str(), "re");
  if (out == nullptr) throw std::runtime_error("no shell");
  std::string text;
  std::array<char, 4096> piece{};
  while (const std::size_t size = fread(piece.data(), 1, piece.size(), out)) {
    text.append(piece.data(), size);
  }
  if (pclose(out) != 0) throw std::runtime_error("failed: " + command);
  return text;
}

inline void run(const std::string& command) {
  outputOf(command);
}

}  // namespace voxtrel::quillback::test
