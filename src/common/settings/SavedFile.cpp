#include "common/settings/SavedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

#include "common/posix/FileDescriptor.h"
#include "common/posix/WriteAll.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0666;  // of which the umask takes its part
constexpr mode_t kOwnerReadsAndWrites = 0600;
constexpr mode_t kPermissions = 07777;

using Old = std::optional<struct stat>;

/// The regular file at `path`, also through a link. One that its owner cannot read has no mode to keep.
Old oldFile(const std::string& path) {
  struct stat found {};
  const bool isFile = ::stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode);
  return isFile && (found.st_mode & S_IRUSR) != 0 ? Old(found) : std::nullopt;
}

/// Opens the draft for writing. What stands there and is not a regular file stays and is not waited for, but
/// a link goes.
FileDescriptor openDraft(const std::string& path, const Old& old) {
  struct stat found {};
  const bool isThere = ::lstat(path.c_str(), &found) == 0;
  if (isThere && S_ISLNK(found.st_mode) && ::unlink(path.c_str()) != 0) return {};
  if (isThere && !S_ISLNK(found.st_mode) && !S_ISREG(found.st_mode)) return {};
  // Other users may not read it before it has the old file's mode.
  return FileDescriptor(::open(path.c_str(),
                               O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                               old ? kOwnerReadsAndWrites : kNewFileMode));
}

/// Some file systems cannot do it, which is no failure.
bool syncToDisk(int file) {
  return ::fsync(file) == 0 || errno == EINVAL || errno == ENOTSUP;
}

/// A change of owner takes special bits away, so the mode comes last.
void keepOwnerAndMode(int file, const struct stat& old) {
  struct stat now {};
  const bool isOthers =
      ::fstat(file, &now) != 0 || now.st_uid != old.st_uid || now.st_gid != old.st_gid;
  const bool isKept = !isOthers || ::fchown(file, old.st_uid, old.st_gid) == 0;
  // Without the old owner, the mode would speak of other people.
  ::fchmod(file, isKept ? old.st_mode & kPermissions : kOwnerReadsAndWrites);
}

/// Leaves no half-written file.
void writeDraft(const std::string& path, std::string_view bytes, const Old& old) {
  const FileDescriptor file = openDraft(path, old);
  if (!file.isOpen()) return;
  const bool isWritten = writeAll(file.get(), bytes);
  if (isWritten && old) keepOwnerAndMode(file.get(), *old);
  if (!isWritten || !syncToDisk(file.get())) ::unlink(path.c_str());
}

/// Renames unless something is at `to`: nothing is overwritten.
void moveItem(const std::string& from, const std::string& to) {
  std::error_code error;
  if (fs::exists(fs::symlink_status(to, error))) return;
  fs::rename(from, to, error);
}

}  // namespace

void saveFile(const std::string& path, std::string_view bytes) {
  const std::string draft = path + ".tmp";
  writeDraft(draft, bytes, oldFile(path));
  std::error_code error;
  fs::remove_all(path, error);
  moveItem(draft, path);
  const FileDescriptor folder(
      ::open(fs::path(path).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen()) ::fsync(folder.get());
}

}  // namespace voxtrel
