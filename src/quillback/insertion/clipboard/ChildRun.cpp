#include "quillback/insertion/clipboard/ChildRun.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace voxtrel::quillback {
namespace {

/// A file in memory with the text. Unlike a pipe it takes any length without waiting for the reader.
FileDescriptor fileWith(const std::string& text) {
  FileDescriptor file(memfd_create("quillback-text", MFD_CLOEXEC));
  std::size_t written = 0;
  while (file.isOpen() && written < text.size()) {
    const ssize_t size = ::write(file.get(), text.data() + written, text.size() - written);
    if (size <= 0) return {};
    written += static_cast<std::size_t>(size);
  }
  if (file.isOpen()) ::lseek(file.get(), 0, SEEK_SET);
  return file;
}

/// Spawn attributes: default signal handlers, empty mask, `input` as standard input, no output.
class SpawnSetup {
 public:
  explicit SpawnSetup(int input) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    sigset_t none{};
    sigset_t all{};
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  /// Returns 0 if the program cannot be started.
  pid_t spawn(char* const* words) const {
    pid_t child = 0;
    return posix_spawnp(&child, words[0], &actions_, &attributes_, words, environ) == 0 ? child : 0;
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

}  // namespace

std::unique_ptr<ChildRun> ChildRun::start(const std::vector<std::string>& words,
                                          const std::string& input, Loop& loop, OnEnd onEnd) {
  const FileDescriptor file = fileWith(input);
  if (!file.isOpen()) return nullptr;
  std::vector<std::string> copies = words;
  std::vector<char*> pointers;
  pointers.reserve(copies.size() + 1);
  for (std::string& copy : copies) pointers.push_back(copy.data());
  pointers.push_back(nullptr);
  const pid_t child = SpawnSetup(file.get()).spawn(pointers.data());
  if (child == 0) return nullptr;
  std::unique_ptr<ChildRun> run(new ChildRun(child, std::move(onEnd)));
  run->watch_ = loop.watch(run->process_.get(), [self = run.get()] { self->handleEnd(); });
  return run;
}

ChildRun::ChildRun(int processId, OnEnd onEnd)
    : processId_(processId),
      process_(static_cast<int>(syscall(SYS_pidfd_open, processId, 0))),
      onEnd_(std::move(onEnd)) {}

void ChildRun::handleEnd() {
  int status = 0;
  if (waitpid(processId_, &status, WNOHANG) == 0) return;
  watch_.reset();
  const OnEnd onEnd = std::exchange(onEnd_, nullptr);
  if (onEnd) onEnd(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

}  // namespace voxtrel::quillback
