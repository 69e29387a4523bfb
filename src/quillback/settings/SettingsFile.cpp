#include "quillback/settings/SettingsFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "common/posix/FileDescriptor.h"

namespace voxtrel::quillback {
namespace {

SettingsFile unreadable(int error) {
  return {"", settingsError(0, std::string("it cannot be read (") + std::strerror(error) +
                                   "); using the defaults")};
}

SettingsFile readAll(int fd) {
  SettingsFile file;
  std::array<char, 4096> piece{};
  for (;;) {
    const ssize_t bytes = ::read(fd, piece.data(), piece.size());
    if (bytes < 0 && errno == EINTR) continue;
    if (bytes < 0) return unreadable(errno);
    if (bytes == 0) return file;
    file.text.append(piece.data(), static_cast<std::size_t>(bytes));
    if (file.text.size() > kLongestSettingsBytes) {
      return {"", settingsError(0, "it is too long to be settings; using the defaults")};
    }
  }
}

}  // namespace

SettingsFile readSettingsFile(const std::string& path) {
  // Without O_NONBLOCK, opening a pipe waits until another process writes to it.
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen())
    return errno == ENOENT || errno == ENOTDIR ? SettingsFile() : unreadable(errno);
  struct stat facts {};
  if (::fstat(file.get(), &facts) < 0) return unreadable(errno);
  if (!S_ISREG(facts.st_mode)) {
    return {"", settingsError(0, "it is not a regular file; using the defaults")};
  }
  return readAll(file.get());
}

std::string settingsError(std::size_t line, std::string_view what) {
  std::string text = "[quillback] ERROR in ~/.config/quillback/config.toml";
  if (line > 0) text += ", line " + std::to_string(line);
  return text.append(": ").append(what);
}

}  // namespace voxtrel::quillback
