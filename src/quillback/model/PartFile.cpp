#include "quillback/model/PartFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace voxtrel::quillback {

namespace {

constexpr mode_t kFileMode = 0666;
constexpr std::size_t kBlockBytes = 1 << 20;
constexpr std::uint64_t kWriteBackBytes = 32 << 20;

}  // namespace

int PartFile::open(const std::string& path) {
  file_ = FileDescriptor(
      ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kFileMode));
  struct stat found {};
  if (!file_.isOpen() || ::fstat(file_.get(), &found) != 0) return errno;
  if (!S_ISREG(found.st_mode)) return EINVAL;
  sizeBytes_ = static_cast<std::uint64_t>(found.st_size);
  return 0;
}

int PartFile::hashAll(const StopSignals& stop) {
  hash_.reset();
  std::vector<char> block(kBlockBytes);
  for (std::uint64_t at = 0; at < sizeBytes_;) {
    if (stop.isRequested()) return ECANCELED;
    const ssize_t got = ::pread(file_.get(), block.data(), block.size(), static_cast<off_t>(at));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    if (got == 0) return EIO;
    hash_.add(std::span(block).first(static_cast<std::size_t>(got)));
    at += static_cast<std::uint64_t>(got);
  }
  return 0;
}

int PartFile::append(std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t written =
        ::pwrite(file_.get(), bytes.data(), bytes.size(), static_cast<off_t>(sizeBytes_));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    const auto count = static_cast<std::size_t>(written);
    hash_.add(bytes.first(count));
    sizeBytes_ += count;
    bytes = bytes.subspan(count);
  }
  writeBackEarly();
  return 0;
}

int PartFile::clear() {
  if (::ftruncate(file_.get(), 0) != 0) return errno;
  hash_.reset();
  sizeBytes_ = 0;
  writtenBackBytes_ = 0;
  return 0;
}

int PartFile::sync() {
  return ::fsync(file_.get()) == 0 ? 0 : errno;
}

/// The disk gets its work as it arrives: otherwise the sync at the end, which no signal interrupts,
/// would last as long as writing gigabytes does.
void PartFile::writeBackEarly() {
  if (sizeBytes_ - writtenBackBytes_ < kWriteBackBytes) return;
  ::sync_file_range(file_.get(), static_cast<off_t>(writtenBackBytes_),
                    static_cast<off_t>(sizeBytes_ - writtenBackBytes_), SYNC_FILE_RANGE_WRITE);
  writtenBackBytes_ = sizeBytes_;
}

}  // namespace voxtrel::quillback
