// Linux's part of starting children and of finding the program's own file.
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <limits>
#include <memory>
#include <system_error>

#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "voxtrel/platform/posix/SpawnedChild.h"

namespace voxtrel {
namespace {

constexpr unsigned kFirstDescriptor = STDERR_FILENO + 1;
constexpr unsigned kCloseOnExec = 1U << 2;  // the kernel's CLOSE_RANGE_CLOEXEC

/// For a kernel or a sandbox without close_range.
void closeEachOnExec() noexcept {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  for (rlim_t descriptor = kFirstDescriptor; descriptor < limit.rlim_cur; ++descriptor) {
    ::fcntl(static_cast<int>(descriptor), F_SETFD, FD_CLOEXEC);
  }
}

/// The kernel kills the child when the thread that created it ends.
/// Thread: any; keeps nothing.
class ParentDeathSignal final : public ChildTether {
 public:
  bool attach(pid_t parent) noexcept override {
    if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) return false;
    // A parent that ended before the request sends nothing.
    if (::getppid() == parent) return true;
    errno = ESRCH;
    return false;
  }
};

}  // namespace

tl::expected<std::shared_ptr<ChildTether>, std::error_code> makeTether() {
  return std::make_shared<ParentDeathSignal>();
}

bool livesAsLongAsProcess() noexcept {
  return ::gettid() == ::getpid();
}

void closeDescriptorsOnExec() noexcept {
  constexpr unsigned kLast = std::numeric_limits<unsigned>::max();
  if (::close_range(kFirstDescriptor, kLast, kCloseOnExec) != 0) closeEachOnExec();
}

std::string executablePath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

}  // namespace voxtrel
