#include "common/posix/OwnFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "common/posix/FileDescriptor.h"

namespace voxtrel {

bool makeOwnFolder(const std::string& path) {
  constexpr mode_t kOwnerOnly = 0700;
  constexpr mode_t kOthers = 0077;
  if (::mkdir(path.c_str(), kOwnerOnly) != 0 && errno != EEXIST) return false;
  const FileDescriptor folder(
      ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat facts {};
  if (!folder.isOpen() || ::fstat(folder.get(), &facts) != 0) return false;
  if (facts.st_uid != ::geteuid()) return false;
  return (facts.st_mode & kOthers) == 0 || ::fchmod(folder.get(), kOwnerOnly) == 0;
}

}  // namespace voxtrel
