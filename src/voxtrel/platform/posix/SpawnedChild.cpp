#include "voxtrel/platform/posix/SpawnedChild.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "common/posix/Pipe.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): missing in some headers

namespace voxtrel {
namespace {

/// What the child reports before it runs the program. If its memory is shared, the parent just looks
/// here. Where a tool turns vfork into fork (thread sanitizers do), it reads the pipe. That costs a
/// wait: exec wakes the parent before it closes the other end.
struct Report {
  Pipe pipe;
  volatile bool isShared = false;
  volatile int error = 0;
};

/// All that the child needs, prepared in the parent: the child must not allocate.
struct Plan {
  const char* executable;
  char* const* arguments;
  const char* workingDirectory;  ///< null: stay
  int output;
  Report* report;
  ChildTether* tether;
  pid_t parent;
};

void takeDefaultSignals() {
  struct sigaction byDefault {};
  byDefault.sa_handler = SIG_DFL;
  for (int signal = 1; signal < NSIG; ++signal) ::sigaction(signal, &byDefault, nullptr);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Keeps the inherited standard input, else opens /dev/null. A descriptor 0 that closes on exec was
/// not inherited: the application opened it for itself.
bool provideStandardInput() {
  const int flags = ::fcntl(STDIN_FILENO, F_GETFD);
  if (flags >= 0 && (flags & FD_CLOEXEC) == 0) return true;
  const int null = ::open("/dev/null", O_RDONLY);
  if (null < 0) return false;
  if (null == STDIN_FILENO) return true;
  return ::dup2(null, STDIN_FILENO) >= 0 && ::close(null) == 0;
}

bool attachStreams(const Plan& plan) {
  return provideStandardInput() && ::dup2(plan.output, STDOUT_FILENO) >= 0 &&
         ::dup2(plan.output, STDERR_FILENO) >= 0;
}

bool enterWorkingDirectory(const Plan& plan) {
  return plan.workingDirectory == nullptr || ::chdir(plan.workingDirectory) == 0;
}

/// Runs in the child, perhaps in the parent's memory.
[[noreturn]] void becomeProgram(const Plan& plan) {
  plan.report->isShared = true;
  if (plan.tether->attach(plan.parent) && attachStreams(plan) && enterWorkingDirectory(plan)) {
    closeDescriptorsOnExec();
    takeDefaultSignals();
    ::execve(plan.executable, plan.arguments, environ);
  }
  const int error = errno;
  plan.report->error = error;
  const int pipe = plan.report->pipe.writeEnd.get();
  [[maybe_unused]] const ssize_t written = ::write(pipe, &error, sizeof error);
  ::_exit(127);
}

/// No signal handler runs on this thread while this lives.
class SignalBlock {
 public:
  SignalBlock() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;

 private:
  sigset_t before_{};
};

/// vfork, because its cost does not grow with the application's memory. The parent's thread stops
/// until the child has called exec or ended. No handler may run in the child: it would change the
/// parent's memory.
pid_t forkInto(const Plan& plan) {
  const SignalBlock block;
  const pid_t pid = ::vfork();        // NOLINT(clang-analyzer-security.insecureAPI.vfork)
  if (pid == 0) becomeProgram(plan);  // NOLINT(clang-analyzer-unix.Vfork): calls the kernel only
  return pid;
}

std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// Why the program cannot run, as an errno; 0 if it runs.
int readReport(Report& report) {
  report.pipe.writeEnd.reset();
  if (report.isShared) return report.error;
  int error = 0;
  ssize_t count = 0;
  do {
    count = ::read(report.pipe.readEnd.get(), &error, sizeof error);
  } while (count < 0 && errno == EINTR);
  return count == static_cast<ssize_t>(sizeof error) ? error : 0;
}

void reap(pid_t pid) {
  while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) continue;
}

}  // namespace

tl::expected<SpawnedChild, std::error_code> spawnChild(const ChildOptions& options, int output) {
  auto tether = makeTether();
  if (!tether) return tl::unexpected(tether.error());
  auto pipe = Pipe::open();
  if (!pipe) return tl::unexpected(pipe.error());
  std::vector<std::string> words{options.executable};
  words.insert(words.end(), options.arguments.begin(), options.arguments.end());
  const std::vector<char*> arguments = pointersTo(words);
  const char* folder =
      options.workingDirectory.empty() ? nullptr : options.workingDirectory.c_str();
  Report report{std::move(*pipe)};
  const Plan plan{.executable = options.executable.c_str(),
                  .arguments = arguments.data(),
                  .workingDirectory = folder,
                  .output = output,
                  .report = &report,
                  .tether = tether->get(),
                  .parent = ::getpid()};
  const pid_t pid = forkInto(plan);
  if (pid < 0) return tl::unexpected(std::error_code(errno, std::generic_category()));
  if (const int error = readReport(report); error != 0) {
    reap(pid);
    return tl::unexpected(std::error_code(error, std::generic_category()));
  }
  return SpawnedChild{pid, std::move(*tether)};
}

}  // namespace voxtrel
