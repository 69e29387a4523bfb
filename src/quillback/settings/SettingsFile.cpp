#include "quillback/settings/SettingsFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace voxtrel::quillback {
namespace {

/// Closes what was opened.
/// Thread: one.  Owns: the descriptor.
class OpenFile {
 public:
  // Without O_NONBLOCK, opening a pipe waits for somebody who writes to it.
  explicit OpenFile(const std::string& path)
      : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (fd_ >= 0) ::close(fd_);
  }
  int fd() const { return fd_; }

 private:
  const int fd_;
};

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
  const OpenFile file(path);
  if (file.fd() < 0)
    return errno == ENOENT || errno == ENOTDIR ? SettingsFile() : unreadable(errno);
  struct stat facts {};
  if (::fstat(file.fd(), &facts) < 0) return unreadable(errno);
  if (!S_ISREG(facts.st_mode)) {
    return {"", settingsError(0, "it is not a regular file; using the defaults")};
  }
  return readAll(file.fd());
}

std::string settingsError(std::size_t line, std::string_view what) {
  std::string text = "[quillback] ERROR in ~/.config/quillback/config.toml";
  if (line > 0) text += ", line " + std::to_string(line);
  return text.append(": ").append(what);
}

}  // namespace voxtrel::quillback
