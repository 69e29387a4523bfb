#include "quillback/model/OwnWeights.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <span>
#include <vector>

#include "common/posix/FileDescriptor.h"
#include "quillback/model/PartFile.h"
#include "quillback/model/ProgressLine.h"

namespace voxtrel::quillback {

namespace {

using Copied = tl::expected<OwnWeights, SetupFailure>;

constexpr std::size_t kPieceBytes = 1 << 20;

// Whisper's vocabularies have 51864 to 51866 words, Parakeet's 1024 or 8192.
constexpr std::uint32_t kMinWhisperWords = 51'864;
constexpr std::uint32_t kMaxWhisperWords = 51'866;
constexpr std::uint32_t kMinParakeetWords = 1'000;

std::uint32_t littleEndian(std::string_view bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = 4; i > 0; --i) {
    number = number << 8 | static_cast<unsigned char>(bytes[i - 1]);
  }
  return number;
}

tl::unexpected<SetupFailure> unusable(const std::string& source, const std::string& why) {
  return tl::unexpected(
      SetupFailure{SetupExit::usage, "Setup failed: " + source + " cannot be used: " + why + "."});
}

std::optional<SetupFailure> lackOfSpace(const ModelFolder& folder, std::uint64_t neededBytes) {
  const std::optional<std::uint64_t> freeBytes = freeSpace(folder.path());
  if (!freeBytes || *freeBytes >= neededBytes) return std::nullopt;
  return SetupFailure{SetupExit::noSpace,
                      "Setup failed: the copy needs " + formatMegabytes(neededBytes) +
                          ", but only " + formatMegabytes(*freeBytes) + " are free in " +
                          folder.path() + ". Make room there and run setup again."};
}

/// Appends all of `file`, which had `totalBytes`, to `part`.
FileResult copyAll(const FileDescriptor& file, PartFile& part, std::uint64_t totalBytes,
                   const StopSignals& stop, Output& output) {
  ProgressThrottle throttle;
  std::vector<char> piece(kPieceBytes);
  for (;;) {
    if (stop.isRequested()) return systemFailure(ECANCELED);
    const ssize_t got = ::read(file.get(), piece.data(), piece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return systemFailure();
    if (got == 0) return part.sync();
    auto added = part.append(std::span(piece).first(static_cast<std::size_t>(got)));
    if (!added) return added;
    const bool isWhole = part.sizeBytes() >= totalBytes;
    if (!throttle.isDue(std::chrono::steady_clock::now(), isWhole)) continue;
    output.print(formatProgress(part.sizeBytes(), totalBytes));
  }
}

}  // namespace

tl::expected<ModelFamily, std::string> familyOfWeights(std::string_view head) {
  constexpr std::string_view kMark = "lmgg";
  if (head.size() < kWeightsHeadBytes || !head.starts_with(kMark)) {
    return tl::make_unexpected("it holds no weights in the ggml format");
  }
  const std::uint32_t words = littleEndian(head.substr(kMark.size()));
  if (words >= kMinWhisperWords && words <= kMaxWhisperWords) return ModelFamily::whisper;
  if (words >= kMinParakeetWords && words < kMinWhisperWords) return ModelFamily::parakeet;
  return tl::make_unexpected("it holds weights, but not of a speech recogniser");
}

Copied copyWeights(const std::string& source, const ModelFolder& folder,
                   const std::string& fileName, const StopSignals& stop, Output& output) {
  const std::optional<std::uint64_t> totalBytes = fileSize(source);
  const FileDescriptor file(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file.isOpen()) return unusable(source, systemFailure().value().message());
  if (!totalBytes) return unusable(source, "it is not a regular file");
  const auto family = familyOfWeights(readSmallFile(source, kWeightsHeadBytes).value_or(""));
  if (!family) return unusable(source, family.error());

  PartFile part(folder.path(), fileName);
  const auto opened = part.open().and_then([&part] { return part.clear(); });
  if (!opened) return tl::unexpected(folder.check(opened).error());
  if (auto failure = lackOfSpace(folder, *totalBytes)) return tl::unexpected(std::move(*failure));
  output.print("Copying " + source + ".");
  const auto copied = copyAll(file, part, *totalBytes, stop, output);
  if (!copied) return tl::unexpected(folder.check(copied).error());
  return OwnWeights{*family, part.path(), part.sizeBytes(), part.digest()};
}

}  // namespace voxtrel::quillback
