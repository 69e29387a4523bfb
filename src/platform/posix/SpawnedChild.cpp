#include "platform/posix/SpawnedChild.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "platform/posix/ChildSetup.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/ThreadSignals.h"

extern char** environ;

namespace voxtrel {
namespace {

/// All that the child needs, ready before it is made: it must not allocate.
struct Plan {
  const char* executable;
  char* const* arguments;
  const char* workingDirectory;  ///< null: stay
  int output;
  int report;  ///< takes an errno when the program cannot run; exec closes it
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

/// Keeps standard input unless there is none to keep: one that closes on exec was not inherited but
/// opened by the application for itself.
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

/// The child's part, in memory that may still be the parent's.
[[noreturn]] void becomeProgram(const Plan& plan) {
  if (dieWithParentThread(plan.parent) && attachStreams(plan) && enterWorkingDirectory(plan)) {
    closeDescriptorsOnExec();
    takeDefaultSignals();
    ::execve(plan.executable, plan.arguments, environ);
  }
  const int error = errno;
  [[maybe_unused]] const ssize_t written = ::write(plan.report, &error, sizeof error);
  ::_exit(127);
}

/// vfork: the cost does not grow with the application's memory. The parent's thread stands still
/// until the child has become the program or has ended, and no handler may run meanwhile: in the
/// child it would change the parent's memory.
pid_t forkInto(const Plan& plan) {
  const SignalBlock block;
  const pid_t pid = ::vfork();  // NOLINT(clang-analyzer-security.insecureAPI.vfork)
  if (pid == 0) becomeProgram(plan);
  return pid;
}

std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// What the child could not do, as an errno; 0 once the program runs.
int readReport(int report) {
  int error = 0;
  ssize_t count = 0;
  do {
    count = ::read(report, &error, sizeof error);
  } while (count < 0 && errno == EINTR);
  return count == static_cast<ssize_t>(sizeof error) ? error : 0;
}

void reap(pid_t pid) {
  while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) continue;
}

}  // namespace

pid_t spawnChild(const ChildOptions& options, int output) {
  std::vector<std::string> words{options.executable};
  words.insert(words.end(), options.arguments.begin(), options.arguments.end());
  const std::vector<char*> arguments = pointersTo(words);
  Pipe report = Pipe::open();
  const char* folder =
      options.workingDirectory.empty() ? nullptr : options.workingDirectory.c_str();
  const Plan plan{options.executable.c_str(), arguments.data(), folder, output,
                  report.writeEnd.number(),   ::getpid()};
  const pid_t pid = forkInto(plan);
  if (pid < 0) throw std::system_error(errno, std::generic_category());
  report.writeEnd.reset();
  if (const int error = readReport(report.readEnd.number()); error != 0) {
    reap(pid);
    throw std::system_error(error, std::generic_category());
  }
  return pid;
}

}  // namespace voxtrel
