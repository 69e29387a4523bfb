#include "quillback/model/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "common/posix/FileDescriptor.h"

namespace voxtrel::quillback {

namespace {

constexpr mode_t kFolderMode = 0777;
constexpr mode_t kFileMode = 0666;

int writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace

std::optional<std::uint64_t> fileSize(const std::string& path) {
  struct stat found {};
  if (::stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(found.st_size);
}

std::optional<std::string> readSmallFile(const std::string& path, std::size_t maxBytes) {
  // Nonblocking: a pipe in the file's place must not hold the reader up.
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat found {};
  if (!file.isOpen() || ::fstat(file.get(), &found) != 0 || !S_ISREG(found.st_mode))
    return std::nullopt;
  std::string text(maxBytes, '\0');
  std::size_t length = 0;
  while (length < maxBytes) {
    const ssize_t got = ::read(file.get(), text.data() + length, maxBytes - length);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    length += static_cast<std::size_t>(got);
  }
  text.resize(length);
  return text;
}

std::optional<std::uint64_t> freeSpace(const std::string& folder) {
  struct statvfs system {};
  if (::statvfs(folder.c_str(), &system) != 0) return std::nullopt;
  return std::uint64_t{system.f_bavail} * system.f_frsize;
}

int makeFolders(const std::string& folder) {
  for (std::size_t end = 1; end != std::string::npos;) {
    end = folder.find('/', end + 1);
    const std::string part = folder.substr(0, end);
    if (::mkdir(part.c_str(), kFolderMode) == 0 || errno == EEXIST) continue;
    // A file system that is read-only says so even of folders that are there.
    const int error = errno;
    struct stat found {};
    if (::stat(part.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) return error;
  }
  return 0;
}

int syncFolder(const std::string& folder) {
  const FileDescriptor handle(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!handle.isOpen() || ::fsync(handle.get()) != 0) return errno;
  return 0;
}

int removeFile(const std::string& path) {
  return ::unlink(path.c_str()) == 0 || errno == ENOENT ? 0 : errno;
}

int replaceFile(const std::string& folder, const std::string& name, std::string_view text) {
  const std::string path = folder + "/" + name;
  const std::string draft = path + ".tmp";
  {
    const FileDescriptor file(
        ::open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, kFileMode));
    if (!file.isOpen()) return errno;
    if (const int error = writeAll(file.get(), text)) return error;
    if (::fsync(file.get()) != 0) return errno;
  }
  if (std::rename(draft.c_str(), path.c_str()) != 0) return errno;
  return syncFolder(folder);
}

}  // namespace voxtrel::quillback
