#include "quillback/audio/TakeFolder.h"

#include <fcntl.h>
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
#include "quillback/audio/WavFile.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

static_assert(std::endian::native == std::endian::little, "samples are written as they are");

constexpr std::string_view kPrefix = "take-";
constexpr std::string_view kSuffix = ".wav";
constexpr std::string_view kNoWordsSuffix = "-no-words.wav";
constexpr int kMaxNumber = 999'999'999;

bool writeAll(int file, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
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

/// One of the files.
/// Thread: one.  Borrows: nothing.
class FileOfTake final : public KeptTake {
 public:
  FileOfTake(const std::string& folder, int number, std::string path)
      : path_(std::move(path)),
        pathWithoutWords_(folder + '/' + takeName(number, kNoWordsSuffix)) {}

  void delivered() override { ::unlink(path_.c_str()); }
  void gaveNoWords() override { ::rename(path_.c_str(), pathWithoutWords_.c_str()); }

 private:
  const std::string path_;
  const std::string pathWithoutWords_;
};

}  // namespace

std::string takeFolderPath() {
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder == nullptr || folder[0] != '/') return "";
  return std::string(folder) + "/quillback";
}

std::vector<StoredTake> TakeFolder::takes() const {
  std::vector<StoredTake> stored;
  for (const auto& [number, path] : listTakes(path_)) {
    stored.push_back({path, std::make_unique<FileOfTake>(path_, number, path)});
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

std::unique_ptr<KeptTake> TakeFolder::keep(std::span<const std::int16_t> samples) {
  constexpr mode_t kOwnerOnly = 0600;
  if (path_.empty() || !makeOwnFolder(path_)) return nullptr;
  makeRoom();
  const std::vector<TakeFile> kept = listTakes(path_);
  int number = std::max(lastNumber_, kept.empty() ? 0 : kept.back().number) + 1;
  const auto path = [&] { return path_ + '/' + takeName(number, kSuffix); };
  const auto create = [&] {
    return ::open(path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly);
  };
  FileDescriptor file(create());
  // Another engine may have taken the number just now.
  while (!file.isOpen() && errno == EEXIST && ++number < kMaxNumber)
    file = FileDescriptor(create());
  if (!file.isOpen()) return nullptr;
  lastNumber_ = number;
  const auto header = wavHeader(samples.size());
  auto take = std::make_unique<FileOfTake>(path_, number, path());
  if (writeAll(file.get(), std::as_bytes(std::span(header))) &&
      writeAll(file.get(), std::as_bytes(samples))) {
    return take;
  }
  take->delivered();
  return nullptr;
}

}  // namespace voxtrel::quillback
