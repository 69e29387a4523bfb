#include "common/settings/TextFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>

#include "common/base/Utf8.h"
#include "common/posix/FileDescriptor.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

using Text = tl::expected<std::string, TextFileError>;

Text failure(std::string reason) {
  return tl::unexpected(TextFileError{false, std::move(reason)});
}

Text unreadable(const std::error_code& error) {
  return failure("it cannot be read (" + error.message() + ")");
}

std::error_code systemError() {
  return {errno, std::generic_category()};
}

Text readRegularFile(const std::string& path, std::size_t maxBytes) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return unreadable(systemError());
  std::string bytes;
  std::array<char, 4096> piece{};
  do {
    file.read(piece.data(), piece.size());
    bytes.append(piece.data(), static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > maxBytes) return failure("it is too long to be settings");
  } while (file);
  if (file.bad()) return unreadable(systemError());
  if (!isValidUtf8(bytes)) return failure("it is not UTF-8 text");
  return bytes;
}

Text read(const std::string& path, std::size_t maxBytes) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) {
    return tl::unexpected(TextFileError{true, "it does not exist"});
  }
  if (error) return unreadable(error);
  if (!fs::is_regular_file(status)) return failure("it is not a regular file");
  return readRegularFile(path, maxBytes);
}

using Done = tl::expected<void, std::error_code>;

constexpr mode_t kPermissions = 07777;
constexpr mode_t kOwnersOwn = S_IRUSR | S_IWUSR;
constexpr mode_t kGroups = S_IRWXG;
constexpr mode_t kUsual = 0666;  // less what the umask takes away

Done systemFailure() {
  return tl::unexpected(systemError());
}

/// Where the links at `path` end; nothing for a loop.
std::optional<fs::path> endOfLinks(fs::path path) {
  constexpr int kMaxLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMaxLinks; ++i) {
    if (!fs::is_symlink(fs::symlink_status(path, error))) return path;
    path = path.parent_path() / fs::read_symlink(path, error);
  }
  return std::nullopt;
}

/// Which file is replaced: the end of a link, unless no file can be there.
fs::path placeFor(const std::string& path) {
  std::error_code error;
  const auto end = endOfLinks(path);
  if (!end) return path;
  const fs::file_status status = fs::status(*end, error);
  const bool isFile = fs::is_regular_file(status);
  const bool canBeMade =
      status.type() == fs::file_type::not_found && fs::is_directory(end->parent_path(), error);
  return isFile || canBeMade ? *end : fs::path(path);
}

/// What stands in a draft's place and may go: a file or link left there.
void removeLeftOver(const fs::path& draft) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(draft, error);
  if (fs::is_regular_file(status) || fs::is_symlink(status)) fs::remove(draft, error);
}

/// Gives the draft mode and owner of the file that it replaces. A group that cannot be kept loses its
/// rights, because they were meant for another one.
Done takeOver(int draft, const struct stat& old) {
  mode_t mode = (old.st_mode & kPermissions) | kOwnersOwn;
  if (::fchown(draft, old.st_uid, old.st_gid) != 0 &&
      ::fchown(draft, static_cast<uid_t>(-1), old.st_gid) != 0) {
    mode &= ~kGroups;
  }
  if (::fchmod(draft, mode) != 0) return systemFailure();
  return {};
}

Done writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return systemFailure();
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

Done sync(int file) {
  // Some file systems cannot.
  if (::fsync(file) == 0 || errno == EINVAL || errno == ENOSYS) return {};
  return systemFailure();
}

Done writeDraft(int draft, const struct stat* old, std::string_view text) {
  if (old != nullptr) {
    if (auto taken = takeOver(draft, *old); !taken) return taken;
  }
  if (auto written = writeAll(draft, text); !written) return written;
  return sync(draft);
}

Done replace(const std::string& path, std::string_view text) {
  const fs::path place = placeFor(path);
  const fs::path draftPath = place.native() + ".tmp";
  struct stat old {};
  const bool isThere = ::lstat(place.c_str(), &old) == 0 && S_ISREG(old.st_mode);
  removeLeftOver(draftPath);
  const FileDescriptor draft(::open(draftPath.c_str(),
                                    O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                    isThere ? kOwnersOwn : kUsual));
  if (!draft.isOpen()) return systemFailure();
  auto done = writeDraft(draft.get(), isThere ? &old : nullptr, text);
  if (done && ::rename(draftPath.c_str(), place.c_str()) != 0) done = systemFailure();
  if (!done) {
    ::unlink(draftPath.c_str());
    return done;
  }
  const FileDescriptor folder(
      ::open(place.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen()) static_cast<void>(sync(folder.get()));  // the new file is in place
  return {};
}

}  // namespace

Text readTextFile(const std::string& path, std::size_t maxBytes) noexcept {
  try {
    return read(path, maxBytes);
  } catch (const std::exception&) {
    return failure("out of memory");  // short enough to need none
  }
}

Done replaceTextFile(const std::string& path, std::string_view text) noexcept {
  try {
    return replace(path, text);
  } catch (const std::exception&) {
    return tl::unexpected(std::make_error_code(std::errc::not_enough_memory));
  }
}

}  // namespace voxtrel
