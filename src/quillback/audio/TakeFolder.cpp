#include "quillback/audio/TakeFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

#include "common/posix/FileDescriptor.h"
#include "common/posix/OwnFolder.h"
#include "common/posix/WriteAll.h"
#include "quillback/audio/WavFormat.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

static_assert(std::endian::native == std::endian::little, "samples are written as they are");

constexpr std::string_view kPrefix = "take-";
constexpr std::string_view kSuffix = ".wav";
constexpr std::string_view kNoWordsSuffix = "-no-words.wav";
constexpr int kMaxNumber = 999'999'999;

template <typename Value, std::size_t kCount>
std::string_view bytesOf(std::span<const Value, kCount> values) {
  return {static_cast<const char*>(static_cast<const void*>(values.data())), values.size_bytes()};
}

/// The number in a file's name; none if it is no recording's.
std::optional<int> takeNumber(std::string_view name) {
  if (!name.starts_with(kPrefix)) return std::nullopt;
  name.remove_prefix(kPrefix.size());
  int number = 0;
  const char* end = name.data() + name.size();
  const auto [rest, error] = std::from_chars(name.data(), end, number);
  if (error != std::errc() || number < 1 || number >= kMaxNumber) return std::nullopt;
  const std::string_view suffix(rest, static_cast<std::size_t>(end - rest));
  return suffix == kSuffix || suffix == kNoWordsSuffix ? std::optional(number) : std::nullopt;
}

std::string takeName(int number, std::string_view suffix) {
  return std::string(kPrefix).append(std::to_string(number)).append(suffix);
}

struct TakeFile {
  int number = 0;
  std::string path;

  bool hasNoWords() const { return path.ends_with(kNoWordsSuffix); }
};

/// The oldest first.
std::vector<TakeFile> listTakes(const std::string& folder) {
  std::vector<TakeFile> found;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const auto number = takeNumber(entry->path().filename().string());
    if (number) found.push_back({*number, entry->path().string()});
  }
  std::ranges::sort(found, {}, &TakeFile::number);
  return found;
}

/// One of the files, locked until this is destroyed.
/// Thread: one.
class FileOfTake final : public KeptTake {
 public:
  FileOfTake(FileDescriptor lock, const std::string& folder, int number, std::string path)
      : lock_(std::move(lock)),
        path_(std::move(path)),
        pathWithoutWords_(folder + '/' + takeName(number, kNoWordsSuffix)) {}

  void delivered() override { ::unlink(path_.c_str()); }
  void gaveNoWords() override { ::rename(path_.c_str(), pathWithoutWords_.c_str()); }

 private:
  const FileDescriptor lock_;
  const std::string path_;
  const std::string pathWithoutWords_;
};

/// Locks the file; not open if another process has it.
FileDescriptor lockTake(const std::string& path) {
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  const bool isLocked = file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0;
  return isLocked ? std::move(file) : FileDescriptor();
}

}  // namespace

std::string takeFolderPath() {
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder == nullptr || folder[0] != '/') return "";
  return std::string(folder) + "/quillback";
}

std::vector<StoredTake> TakeFolder::takes() const {
  std::vector<StoredTake> stored;
  for (const auto& [number, path] : listTakes(path_)) {
    FileDescriptor lock = lockTake(path);
    if (!lock.isOpen()) continue;
    stored.push_back({path, std::make_unique<FileOfTake>(std::move(lock), path_, number, path)});
  }
  return stored;
}

/// Removes the recordings that gave no words, and the oldest of too many.
void TakeFolder::makeRoom() const {
  std::vector<TakeFile> kept = listTakes(path_);
  std::erase_if(kept, [](const TakeFile& file) {
    return file.hasNoWords() && ::unlink(file.path.c_str()) == 0;
  });
  for (std::size_t i = 0; i + kMaxFiles <= kept.size(); ++i) ::unlink(kept[i].path.c_str());
}

/// Written under another name, so that a take is whole and locked when it can be seen.
std::unique_ptr<KeptTake> TakeFolder::keep(std::span<const std::int16_t> samples) {
  constexpr mode_t kOwnerOnly = 0600;
  if (path_.empty() || !makeOwnFolder(path_)) return nullptr;
  makeRoom();
  const std::string draft = path_ + "/draft-" + std::to_string(::getpid());
  FileDescriptor file(
      ::open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
  if (!file.isOpen()) return nullptr;
  ::flock(file.get(), LOCK_EX);
  const auto header = wavHeader(samples.size());
  const bool isWritten =
      writeAll(file.get(), bytesOf(std::span(header))) && writeAll(file.get(), bytesOf(samples));
  const int number = isWritten ? nameDraft(draft) : 0;
  ::unlink(draft.c_str());
  if (number == 0) return nullptr;
  return std::make_unique<FileOfTake>(std::move(file), path_, number,
                                      path_ + '/' + takeName(number, kSuffix));
}

/// The draft's number as a take; 0 if it cannot become one.
int TakeFolder::nameDraft(const std::string& draft) {
  const std::vector<TakeFile> kept = listTakes(path_);
  int number = std::max(lastNumber_, kept.empty() ? 0 : kept.back().number) + 1;
  const auto link = [&] {
    return ::link(draft.c_str(), (path_ + '/' + takeName(number, kSuffix)).c_str()) == 0;
  };
  // Another engine may have taken the number just now.
  while (!link()) {
    if (errno != EEXIST || ++number >= kMaxNumber) return 0;
  }
  lastNumber_ = number;
  return number;
}

}  // namespace voxtrel::quillback
