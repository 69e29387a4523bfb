#include "quillback/audio/WavFormat.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kFormatBytes = 16;
constexpr std::size_t kSubformatOffset = 24;
constexpr unsigned kPcm = 1;
constexpr unsigned kFloat = 3;
constexpr unsigned kExtensible = 0xFFFE;

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

/// Why samples of this format cannot be read; none if they can.
std::optional<std::string> objection(const WavFormat& format) {
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

}  // namespace

tl::expected<WavFormat, std::string> parseWavFormat(Bytes chunk) {
  if (chunk.size() < kFormatBytes) return tl::make_unexpected("its header is cut short");
  WavFormat format{word(chunk, 0), word(chunk, 2), doubleWord(chunk, 4), word(chunk, 12),
                   word(chunk, 14)};
  if (format.encoding == kExtensible && chunk.size() >= kSubformatOffset + 2) {
    format.encoding = word(chunk, kSubformatOffset);
  }
  if (auto why = objection(format)) return tl::unexpected(std::move(*why));
  return format;
}

void averageChannels(const WavFormat& format, Bytes data, std::vector<float>& samples) {
  samples.clear();
  for (; data.size() >= format.frameBytes; data = data.subspan(format.frameBytes)) {
    float sum = 0;
    for (unsigned channel = 0; channel < format.channels; ++channel) {
      const Bytes sample = data.subspan(channel * format.sampleBytes(), format.sampleBytes());
      sum += format.encoding == kPcm ? integerSample(sample) : floatSample(sample);
    }
    samples.push_back(sum / static_cast<float>(format.channels));
  }
}

WavChunk parseWavChunk(std::span<const std::uint8_t, kWavChunkBytes> header) {
  return {std::string(header.begin(), header.begin() + 4), doubleWord(header, 4)};
}

std::array<std::uint8_t, kWavHeaderBytes> wavHeader(std::size_t samples) {
  constexpr std::size_t kSampleBytes = sizeof(std::int16_t);
  const std::size_t dataBytes = samples * kSampleBytes;
  HeaderWriter header;
  header.tag("RIFF");
  header.number(kWavHeaderBytes - kWavChunkBytes + dataBytes, 4);
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

}  // namespace voxtrel::quillback
