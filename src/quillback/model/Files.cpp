#include "quillback/model/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "common/posix/FileDescriptor.h"
#include "common/posix/WriteAll.h"

namespace voxtrel::quillback {

namespace {

constexpr mode_t kFolderMode = 0777;
constexpr mode_t kPermissions = 0777;
constexpr std::size_t kBlockBytes = 1 << 20;

void require(int success) {
  if (success == 1) return;
  std::fputs("SHA-256 is not available\n", stderr);
  std::abort();
}

}  // namespace

Sha256::Sha256() : context_(EVP_MD_CTX_new()) {
  reset();
}

void Sha256::add(std::span<const char> bytes) {
  require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()));
}

void Sha256::reset() {
  require(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
}

std::string Sha256::digest() const {
  const Handle<EVP_MD_CTX, EVP_MD_CTX_free> copy(EVP_MD_CTX_new());
  require(EVP_MD_CTX_copy_ex(copy.get(), context_.get()));
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned int length = 0;
  require(EVP_DigestFinal_ex(copy.get(), bytes.data(), &length));
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : std::span(bytes).first(length)) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xf];
  }
  return text;
}

std::optional<std::uint64_t> fileSize(const std::string& path) {
  struct stat found {};
  if (::stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(found.st_size);
}

std::optional<std::string> readSmallFile(const std::string& path, std::size_t maxBytes) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat found {};
  if (!file.isOpen() || ::fstat(file.get(), &found) != 0 || !S_ISREG(found.st_mode)) {
    return std::nullopt;
  }
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

FileResult hashFile(int descriptor, Sha256& hash, const StopSignals& stop) {
  std::vector<char> block(kBlockBytes);
  for (off_t at = 0;;) {
    if (stop.isRequested()) return systemFailure(ECANCELED);
    const ssize_t got = ::pread(descriptor, block.data(), block.size(), at);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return systemFailure();
    if (got == 0) return {};
    hash.add(std::span(block).first(static_cast<std::size_t>(got)));
    at += got;
  }
}

FileResult readRange(int descriptor, std::uint64_t begin, std::uint64_t end,
                     const StopSignals& stop,
                     const std::function<void(std::span<const char>)>& take) {
  std::vector<char> block(
      static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, kBlockBytes)));
  while (begin < end) {
    if (stop.isRequested()) return systemFailure(ECANCELED);
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, block.size()));
    const ssize_t got = ::pread(descriptor, block.data(), wanted, static_cast<off_t>(begin));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return systemFailure(got < 0 ? errno : EIO);
    take(std::span(block).first(static_cast<std::size_t>(got)));
    begin += static_cast<std::uint64_t>(got);
  }
  return {};
}

std::optional<std::uint64_t> freeSpace(const std::string& folder) {
  struct statvfs system {};
  if (::statvfs(folder.c_str(), &system) != 0) return std::nullopt;
  return std::uint64_t{system.f_bavail} * system.f_frsize;
}

FileResult writeAll(int descriptor, std::string_view text) {
  if (!voxtrel::writeAll(descriptor, text)) return systemFailure();
  return {};
}

FileResult makeFolders(const std::string& folder) {
  for (std::size_t end = 1; end != std::string::npos;) {
    end = folder.find('/', end + 1);
    const std::string part = folder.substr(0, end);
    if (::mkdir(part.c_str(), kFolderMode) == 0 || errno == EEXIST) continue;
    // A read-only file system reports an error even for a folder that exists.
    const auto failure = systemFailure();
    struct stat found {};
    if (::stat(part.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) return failure;
  }
  return {};
}

FileResult syncFolder(const std::string& folder) {
  const FileDescriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!file.isOpen() || ::fsync(file.get()) != 0) return systemFailure();
  return {};
}

FileResult removeFile(const std::string& path) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) return systemFailure();
  return {};
}

FileResult replaceFile(const std::string& folder, const std::string& name, std::string_view text,
                       std::optional<mode_t> mode) {
  const std::string path = folder + "/" + name;
  const std::string draft = path + ".tmp";
  {
    const FileDescriptor file(
        ::open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, kFileMode));
    if (!file.isOpen()) return systemFailure();
    if (mode && ::fchmod(file.get(), *mode & kPermissions) != 0) return systemFailure();
    if (auto written = writeAll(file.get(), text); !written) return written;
    if (::fsync(file.get()) != 0) return systemFailure();
  }
  if (std::rename(draft.c_str(), path.c_str()) != 0) return systemFailure();
  return syncFolder(folder);
}

}  // namespace voxtrel::quillback
