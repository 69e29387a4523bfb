#include "quillback/settings/StateFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "common/base/HomeDirectory.h"
#include "common/posix/FileDescriptor.h"
#include "common/posix/OwnFolder.h"
#include "common/posix/WriteAll.h"

namespace voxtrel::quillback {
namespace {

constexpr mode_t kOwnerReadsAndWrites = 0600;
constexpr std::size_t kMaxStateBytes = 4096;

std::string stateFolder() {
  const char* home = std::getenv("XDG_STATE_HOME");
  const bool isSet = home != nullptr && home[0] == '/';
  return (isSet ? std::string(home) : homeDirectory() + "/.local/state") + "/quillback";
}

bool makeFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(folder).parent_path(), error);
  return makeOwnFolder(folder);
}

}  // namespace

std::string makeStateFolder() {
  std::string folder = stateFolder();
  static_cast<void>(makeFolder(folder));
  return folder;
}

StateFile::StateFile(std::string_view name) : folder_(stateFolder()) {
  path_ = folder_ + '/' + std::string(name);
}

std::optional<std::string> StateFile::read() const {
  const FileDescriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!file.isOpen()) return std::nullopt;
  std::array<char, kMaxStateBytes> text{};
  const ssize_t size = ::read(file.get(), text.data(), text.size());
  if (size < 0) return std::nullopt;
  return std::string(text.data(), static_cast<std::size_t>(size));
}

bool StateFile::write(std::string_view text) const {
  if (text.size() > kMaxStateBytes || !makeFolder(folder_)) return false;
  const std::string draft = path_ + '.' + std::to_string(::getpid());
  ::unlink(draft.c_str());
  const FileDescriptor file(
      ::open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerReadsAndWrites));
  const bool isWritten =
      file.isOpen() && writeAll(file.get(), text) && std::rename(draft.c_str(), path_.c_str()) == 0;
  if (!isWritten) ::unlink(draft.c_str());
  return isWritten;
}

void StateFile::remove() const {
  ::unlink(path_.c_str());
}

}  // namespace voxtrel::quillback
