#include "voxtrel/platform/macos/process/GuardProcess.h"

#import <Foundation/Foundation.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <string>
#include <utility>

#include "common/posix/Pipe.h"
#include "voxtrel/platform/posix/ExecutableFolder.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): missing in some headers

namespace voxtrel {
namespace {

/// The first line is the child's id; the second never comes, so its reading ends with the pipe. Requests
/// to end are for the application.
constexpr const char* kScript =
    "trap '' HUP INT QUIT TERM; read -r child || exit 0; read -r end; kill -KILL \"$child\"";

/// What the shell starts with: the pipe as standard input and no other descriptor of ours.
/// Thread: one.
class ShellSetup {
 public:
  explicit ShellSetup(int input) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
#if defined(__APPLE__)
    constexpr int kCloseOthers = POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
    constexpr int kCloseOthers = 0;
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
#endif
    constexpr int kFlags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID | kCloseOthers;
    posix_spawnattr_setflags(&attributes_, static_cast<short>(kFlags));
  }
  ShellSetup(const ShellSetup&) = delete;
  ShellSetup& operator=(const ShellSetup&) = delete;
  ~ShellSetup() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  /// Returns 0 or an errno.
  int spawn(pid_t& shell, const std::string& script) const {
    std::array<std::string, 3> words = {"/bin/sh", "-c", script};
    const std::array<char*, 4> arguments = {words[0].data(), words[1].data(), words[2].data(),
                                            nullptr};
    return posix_spawn(&shell, arguments[0], &actions_, &attributes_, arguments.data(), environ);
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

/// A process id and a newline, written without help of the C library.
struct IdLine {
  explicit IdLine(pid_t id) {
    for (auto rest = static_cast<unsigned long>(id); rest > 0; rest /= 10) {
      text[--begin] = static_cast<char>('0' + rest % 10);
    }
  }
  static constexpr std::size_t kSize = 24;
  std::array<char, kSize> text{};
  std::size_t begin = kSize - 1;  ///< the last character is the newline
};

}  // namespace

tl::expected<std::shared_ptr<ChildTether>, std::error_code> GuardProcess::start() {
  auto pipe = Pipe::open();
  if (!pipe) return tl::unexpected(pipe.error());
  pid_t shell = 0;
  const int error = ShellSetup(pipe->readEnd.get()).spawn(shell, kScript);
  if (error != 0) return tl::unexpected(std::error_code(error, std::generic_category()));
  return std::make_shared<GuardProcess>(shell, std::move(pipe->writeEnd));
}

GuardProcess::GuardProcess(pid_t shell, FileDescriptor pipe)
    : shell_(shell), pipe_(std::move(pipe)) {}

GuardProcess::~GuardProcess() {
  ::kill(shell_, SIGKILL);
  while (::waitpid(shell_, nullptr, 0) < 0 && errno == EINTR) continue;
}

bool GuardProcess::attach(pid_t /*parent*/) noexcept {
  IdLine line(::getpid());
  line.text.back() = '\n';
  const std::size_t length = IdLine::kSize - line.begin;
  return ::write(pipe_.get(), line.text.data() + line.begin, length) ==
         static_cast<ssize_t>(length);
}

// The system's part of starting children and of finding the program's own file.

std::string executablePath() {
  @autoreleasepool {
    NSString* path = NSBundle.mainBundle.executablePath.stringByResolvingSymlinksInPath;
    return path == nil ? "" : path.UTF8String;
  }
}

tl::expected<std::shared_ptr<ChildTether>, std::error_code> makeTether() {
  return GuardProcess::start();
}

/// A guard watches for the end of the process, whatever thread starts the child.
bool livesAsLongAsProcess() noexcept {
  return true;
}

void closeDescriptorsOnExec() noexcept {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  // Unlimited means as many as the system has for one process.
  constexpr rlim_t kMaxDescriptors = 10240;
  const rlim_t end = limit.rlim_cur < kMaxDescriptors ? limit.rlim_cur : kMaxDescriptors;
  for (rlim_t descriptor = STDERR_FILENO + 1; descriptor < end; ++descriptor) {
    ::fcntl(static_cast<int>(descriptor), F_SETFD, FD_CLOEXEC);
  }
}

}  // namespace voxtrel
