#include "quillback/model/StoreLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <system_error>

namespace voxtrel::quillback {

namespace {

constexpr std::chrono::milliseconds kBetweenTries(50);
constexpr mode_t kFileMode = 0666;

}  // namespace

std::optional<SetupFailure> StoreLock::take(const std::string& folder, const StopSignals& stop,
                                            Output& output) {
  file_ = FileDescriptor(::open((folder + "/setup.lock").c_str(),
                                O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kFileMode));
  if (!file_.isOpen()) return writeFailure(errno, folder);
  for (bool isFirst = true; ::flock(file_.get(), LOCK_EX | LOCK_NB) != 0; isFirst = false) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      return SetupFailure{SetupExit::locked, "Setup failed: " + folder + " cannot be locked (" +
                                                 std::generic_category().message(errno) +
                                                 "). Check the file system it is on."};
    }
    if (isFirst) output.print("Another setup is running; waiting for it.");
    if (stop.waitFor(kBetweenTries)) return interruption();
  }
  return std::nullopt;
}

}  // namespace voxtrel::quillback
