#include "quillback/audio/WavFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kRiffHeaderBytes = 12;
constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::size_t kFormatBytes = 16;
constexpr std::size_t kSubformatOffset = 24;
constexpr std::size_t kMaxFileBytes = 1'000'000'000;
constexpr std::uint32_t kUnknownSize = 0xFFFFFFFF;
constexpr unsigned kPcm = 1;
constexpr unsigned kFloat = 3;
constexpr unsigned kExtensible = 0xFFFE;

struct Format {
  unsigned encoding = 0;
  unsigned channels = 0;
  std::uint32_t rateHz = 0;
  unsigned frameBytes = 0;
  unsigned bits = 0;

  std::size_t sampleBytes() const { return bits / 8; }
};

std::uint64_t littleEndian(Bytes bytes) {
  std::uint64_t value = 0;
  for (std::size_t at = bytes.size(); at-- > 0;) value = value << 8 | bytes[at];
  return value;
}

unsigned word(Bytes bytes, std::size_t at) {
  return static_cast<unsigned>(littleEndian(bytes.subspan(at, 2)));
}

std::uint32_t doubleWord(Bytes bytes, std::size_t at) {
  return static_cast<std::uint32_t>(littleEndian(bytes.subspan(at, 4)));
}

/// Appends values to a header.
/// Thread: one.
class HeaderWriter {
 public:
  void tag(std::string_view letters) {
    for (const char letter : letters) bytes_.at(size_++) = static_cast<std::uint8_t>(letter);
  }
  /// Little-endian.
  void number(std::size_t value, int bytes) {
    for (; bytes > 0; --bytes, value >>= 8) bytes_.at(size_++) = static_cast<std::uint8_t>(value);
  }
  const std::array<std::uint8_t, kWavHeaderBytes>& bytes() const { return bytes_; }

 private:
  std::array<std::uint8_t, kWavHeaderBytes> bytes_{};
  std::size_t size_ = 0;
};

bool hasTag(Bytes bytes, std::size_t at, std::string_view tag) {
  return std::memcmp(bytes.data() + at, tag.data(), tag.size()) == 0;
}

/// Why samples of this format cannot be read; none if they can.
std::optional<std::string> objection(const Format& format) {
  const bool isPcm = format.encoding == kPcm && (format.bits == 8 || format.bits == 16 ||
                                                 format.bits == 24 || format.bits == 32);
  const bool isFloat = format.encoding == kFloat && (format.bits == 32 || format.bits == 64);
  if (!isPcm && !isFloat) {
    return "its samples are of a kind that is not supported (encoding " +
           std::to_string(format.encoding) + ", " + std::to_string(format.bits) + " bits)";
  }
  if (format.channels < 1 || format.channels > kMaxChannels) {
    return "it has " + std::to_string(format.channels) + " channels";
  }
  if (format.rateHz < kMinRateHz || format.rateHz > kMaxRateHz) {
    return "its sample rate is " + std::to_string(format.rateHz) + " Hz";
  }
  if (format.frameBytes != format.channels * format.sampleBytes()) {
    return "its header contradicts itself";
  }
  return std::nullopt;
}

tl::expected<Format, std::string> readFormat(Bytes chunk) {
  if (chunk.size() < kFormatBytes) return tl::make_unexpected("its header is cut short");
  Format format{word(chunk, 0), word(chunk, 2), doubleWord(chunk, 4), word(chunk, 12),
                word(chunk, 14)};
  if (format.encoding == kExtensible && chunk.size() >= kSubformatOffset + 2) {
    format.encoding = word(chunk, kSubformatOffset);
  }
  if (auto why = objection(format)) return tl::unexpected(std::move(*why));
  return format;
}

float integerSample(Bytes bytes) {
  if (bytes.size() == 1) return static_cast<float>(bytes[0] - 128) / 128.0F;
  // Shifted to the top of 32 bits, so that the sign bit is the highest.
  const auto raw = static_cast<std::uint32_t>(littleEndian(bytes) << (32 - 8 * bytes.size()));
  return static_cast<float>(static_cast<std::int32_t>(raw)) / 2147483648.0F;
}

float floatSample(Bytes bytes) {
  const double value = bytes.size() == 4
                           ? static_cast<double>(std::bit_cast<float>(doubleWord(bytes, 0)))
                           : std::bit_cast<double>(littleEndian(bytes));
  return std::isfinite(value) ? static_cast<float>(std::clamp(value, -1.0, 1.0)) : 0.0F;
}

std::vector<float> readSamples(const Format& format, Bytes data) {
  std::vector<float> samples;
  samples.reserve(data.size() / format.frameBytes);
  for (; data.size() >= format.frameBytes; data = data.subspan(format.frameBytes)) {
    float sum = 0;
    for (unsigned channel = 0; channel < format.channels; ++channel) {
      const Bytes sample = data.subspan(channel * format.sampleBytes(), format.sampleBytes());
      sum += format.encoding == kPcm ? integerSample(sample) : floatSample(sample);
    }
    samples.push_back(sum / static_cast<float>(format.channels));
  }
  return samples;
}

WavSound readData(const Format& format, Bytes rest, std::uint32_t statedBytes) {
  WavSound sound;
  sound.rateHz = static_cast<int>(format.rateHz);
  // A program that writes to a pipe cannot fill in the length: it stays 0 or all ones.
  const bool isStreamed =
      statedBytes == kUnknownSize || (statedBytes == 0 && rest.size() >= format.frameBytes);
  if (isStreamed) {
    sound.note = "The file does not say how long it is: all of it is used.";
  } else if (statedBytes > rest.size()) {
    sound.note = "The file was cut short: what is there is used.";
  }
  const std::size_t bytes =
      isStreamed ? rest.size() : std::min<std::size_t>(statedBytes, rest.size());
  sound.samples = readSamples(format, rest.first(bytes));
  return sound;
}

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

tl::unexpected<WavError> unreadable(int error) {
  return tl::unexpected(
      WavError{WavError::Kind::unreadable, std::generic_category().message(error)});
}

tl::unexpected<WavError> notWav(std::string why) {
  return tl::unexpected(WavError{WavError::Kind::notWav, std::move(why)});
}

tl::expected<std::vector<std::uint8_t>, WavError> readBytes(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return unreadable(errno);
  if (S_ISDIR(status.st_mode)) return unreadable(EISDIR);
  const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rbe"));
  if (!file) return unreadable(errno);
  std::vector<std::uint8_t> bytes;
  std::array<std::uint8_t, 65536> piece{};
  std::size_t count = 0;
  while ((count = std::fread(piece.data(), 1, piece.size(), file.get())) > 0) {
    if (bytes.size() + count > kMaxFileBytes) return notWav("it is larger than 1 GB");
    bytes.insert(bytes.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(count));
  }
  if (std::ferror(file.get()) != 0) return unreadable(errno);
  return bytes;
}

}  // namespace

std::array<std::uint8_t, kWavHeaderBytes> wavHeader(std::size_t samples) {
  constexpr std::size_t kSampleBytes = sizeof(std::int16_t);
  const std::size_t dataBytes = samples * kSampleBytes;
  HeaderWriter header;
  header.tag("RIFF");
  header.number(kWavHeaderBytes - kChunkHeaderBytes + dataBytes, 4);
  header.tag("WAVEfmt ");
  header.number(kFormatBytes, 4);
  header.number(kPcm, 2);
  header.number(1, 2);
  header.number(kSampleRateHz, 4);
  header.number(kSampleRateHz * kSampleBytes, 4);
  header.number(kSampleBytes, 2);
  header.number(8 * kSampleBytes, 2);
  header.tag("data");
  header.number(dataBytes, 4);
  return header.bytes();
}

tl::expected<WavSound, std::string> parseWav(Bytes bytes) {
  if (bytes.size() < kRiffHeaderBytes || !hasTag(bytes, 0, "RIFF") || !hasTag(bytes, 8, "WAVE")) {
    return tl::make_unexpected("it is not a WAV file");
  }
  std::optional<Format> format;
  std::size_t at = kRiffHeaderBytes;
  while (bytes.size() - at >= kChunkHeaderBytes) {
    const std::uint32_t stated = doubleWord(bytes, at + 4);
    const Bytes rest = bytes.subspan(at + kChunkHeaderBytes);
    if (hasTag(bytes, at, "data")) {
      if (!format) return tl::make_unexpected("its samples come before their description");
      return readData(*format, rest, stated);
    }
    if (hasTag(bytes, at, "fmt ")) {
      auto read = readFormat(rest.first(std::min<std::size_t>(stated, rest.size())));
      if (!read) return tl::unexpected(std::move(read.error()));
      format = *read;
    }
    // Chunks start at even offsets.
    const std::size_t padded = std::size_t{stated} + stated % 2;
    if (padded >= rest.size()) break;
    at += kChunkHeaderBytes + padded;
  }
  return tl::make_unexpected("it holds no samples");
}

tl::expected<WavSound, WavError> readWav(const std::string& path) {
  const auto bytes = readBytes(path);
  if (!bytes) return tl::unexpected(bytes.error());
  auto sound = parseWav(*bytes);
  if (!sound) return notWav(std::move(sound.error()));
  return std::move(*sound);
}

}  // namespace voxtrel::quillback
