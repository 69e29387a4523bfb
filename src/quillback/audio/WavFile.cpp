#include "quillback/audio/WavFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kRiffHeaderBytes = 12;
constexpr std::size_t kBlockFrames = 4096;
constexpr std::size_t kSkipBytes = 65536;
constexpr std::uint32_t kUnknownSize = 0xFFFFFFFF;
constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

tl::unexpected<WavError> unreadable(int error) {
  return tl::unexpected(
      WavError{WavError::Kind::unreadable, std::generic_category().message(error)});
}

tl::unexpected<WavError> notWav(std::string why) {
  return tl::unexpected(WavError{WavError::Kind::notWav, std::move(why)});
}

/// How much follows; nothing if that cannot be known.
std::optional<std::uint64_t> bytesAhead(std::FILE* file) {
  const off_t at = ::ftello(file);
  if (at < 0 || ::fseeko(file, 0, SEEK_END) != 0) return std::nullopt;
  const off_t end = ::ftello(file);
  if (::fseeko(file, at, SEEK_SET) != 0 || end <= at) return std::nullopt;
  return static_cast<std::uint64_t>(end - at);
}

}  // namespace

WavFile::WavFile(OpenFile file) : file_(std::move(file)), leftBytes_(bytesAhead(file_.get())) {}

tl::expected<WavFile, WavError> WavFile::open(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return unreadable(errno);
  if (S_ISDIR(status.st_mode)) return unreadable(EISDIR);
  OpenFile file(std::fopen(path.c_str(), "rbe"));
  if (!file) return unreadable(errno);
  return read(std::move(file));
}

tl::expected<WavFile, WavError> WavFile::read(OpenFile file) {
  WavFile wav(std::move(file));
  if (auto found = wav.findSamples(); !found) return tl::unexpected(std::move(found.error()));
  return wav;
}

std::optional<std::chrono::seconds> WavFile::length() const {
  if (!leftBytes_) return std::nullopt;
  return std::chrono::seconds(sampleBytes_ / format_.frameBytes / format_.rateHz);
}

/// Reads up to where the samples begin.
tl::expected<void, WavError> WavFile::findSamples() {
  const auto head = readUpTo(kRiffHeaderBytes);
  if (!head) return tl::unexpected(head.error());
  if (head->size() < kRiffHeaderBytes || std::memcmp(head->data(), "RIFF", 4) != 0 ||
      std::memcmp(head->data() + 8, "WAVE", 4) != 0) {
    return notWav("it is not a WAV file");
  }
  for (;;) {
    const auto chunk = nextChunk();
    if (!chunk) return tl::unexpected(chunk.error());
    if (chunk->tag == "data") return beginSamples(chunk->bytes);
    // Chunks start at even offsets.
    std::uint64_t padded = std::uint64_t{chunk->bytes} + chunk->bytes % 2;
    if (chunk->tag == "fmt ") {
      if (auto read = readFormat(chunk->bytes); !read) return read;
      padded -=
          std::min<std::uint64_t>(padded, std::min<std::size_t>(chunk->bytes, kMaxWavFormatBytes));
    }
    if (auto skipped = skip(padded); !skipped) return skipped;
  }
}

tl::expected<WavChunk, WavError> WavFile::nextChunk() {
  const auto head = readUpTo(kWavChunkBytes);
  if (!head) return tl::unexpected(head.error());
  if (head->size() < kWavChunkBytes) return notWav("it holds no samples");
  return parseWavChunk(head->first<kWavChunkBytes>());
}

tl::expected<void, WavError> WavFile::readFormat(std::uint32_t statedBytes) {
  const auto chunk = readUpTo(std::min<std::size_t>(statedBytes, kMaxWavFormatBytes));
  if (!chunk) return tl::unexpected(chunk.error());
  auto format = parseWavFormat(*chunk);
  if (!format) return notWav(std::move(format.error()));
  format_ = *format;
  hasFormat_ = true;
  return {};
}

tl::expected<void, WavError> WavFile::beginSamples(std::uint32_t statedBytes) {
  if (!hasFormat_) return notWav("its samples come before their description");
  // A program that writes to a pipe cannot fill in the length: it stays 0 or all ones.
  const bool isUnset = statedBytes == kUnknownSize ||
                       (statedBytes == 0 && leftBytes_.value_or(kNoLimit) >= format_.frameBytes);
  isLengthStated_ = !isUnset;
  sampleBytes_ = std::min(isUnset ? kNoLimit : statedBytes, leftBytes_.value_or(kNoLimit));
  if (isUnset && leftBytes_) {
    note_ = "The file does not say how long it is: all of it is used.";
  } else if (!isUnset && sampleBytes_ < statedBytes) {
    note_ = "The file was cut short: what is there is used.";
  }
  return {};
}

tl::expected<std::span<const float>, WavError> WavFile::next() {
  const auto wanted = std::min<std::uint64_t>(sampleBytes_, kBlockFrames * format_.frameBytes);
  const auto data = readUpTo(static_cast<std::size_t>(wanted));
  if (!data) return tl::unexpected(data.error());
  averageChannels(format_, *data, samples_);
  sampleBytes_ -= sampleBytes_ == kNoLimit ? 0 : data->size();
  if (data->size() < wanted) {
    sampleBytes_ = 0;
    if (note_.empty() && isLengthStated_) note_ = "The file was cut short: what is there is used.";
  }
  if (!isLengthStated_ && note_.empty() && !samples_.empty()) {
    note_ = "The file does not say how long it is: all of it is used.";
  }
  return std::span<const float>(samples_);
}

tl::expected<void, WavError> WavFile::skip(std::uint64_t bytes) {
  while (bytes > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, kSkipBytes));
    const auto skipped = readUpTo(wanted);
    if (!skipped) return tl::unexpected(skipped.error());
    if (skipped->size() < wanted) return notWav("it holds no samples");
    bytes -= wanted;
  }
  return {};
}

/// Fewer bytes only at the end of the file.
tl::expected<std::span<const std::uint8_t>, WavError> WavFile::readUpTo(std::size_t bytes) {
  bytes_.resize(std::max(bytes_.size(), bytes));
  const std::size_t count = std::fread(bytes_.data(), 1, bytes, file_.get());
  if (count < bytes && std::ferror(file_.get()) != 0) return unreadable(errno);
  if (leftBytes_) *leftBytes_ -= std::min<std::uint64_t>(*leftBytes_, count);
  return std::span<const std::uint8_t>(bytes_).first(count);
}

}  // namespace voxtrel::quillback
