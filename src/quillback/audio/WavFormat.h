#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <tl/expected.hpp>

namespace voxtrel::quillback {

inline constexpr int kMinRateHz = 1000;
inline constexpr int kMaxRateHz = 384'000;
inline constexpr int kMaxChannels = 32;

inline constexpr std::size_t kWavHeaderBytes = 44;

/// The start of a WAV file with this many mono samples of 16 bits at kSampleRateHz. The samples follow,
/// in little-endian order; less than 2 GB of them.
std::array<std::uint8_t, kWavHeaderBytes> wavHeader(std::size_t samples);

/// How the samples of a WAV file are stored.
struct WavFormat {
  unsigned encoding = 0;     ///< 1: integers; 3: floating point
  unsigned channels = 0;     ///< 1 to kMaxChannels
  std::uint32_t rateHz = 0;  ///< kMinRateHz to kMaxRateHz
  unsigned frameBytes = 0;   ///< a sample of each channel
  unsigned bits = 0;         ///< integers: 8, 16, 24, 32; floating point: 32, 64

  std::size_t sampleBytes() const { return bits / 8; }
};

/// Parses the bytes of a "fmt " chunk, also with the extensible header.
/// Fails by: half a sentence: "its …" or "it …".
tl::expected<WavFormat, std::string> parseWavFormat(std::span<const std::uint8_t> chunk);

/// No format is longer.
inline constexpr std::size_t kMaxWavFormatBytes = 40;
inline constexpr std::size_t kWavChunkBytes = 8;

/// The head of a chunk.
struct WavChunk {
  std::string tag;
  std::uint32_t bytes = 0;  ///< of its content, as stated
};

WavChunk parseWavChunk(std::span<const std::uint8_t, kWavChunkBytes> header);

/// Replaces `samples` by the whole frames in `data`: all channels averaged into one, from -1 to 1.
void averageChannels(const WavFormat& format, std::span<const std::uint8_t> data,
                     std::vector<float>& samples);

}  // namespace voxtrel::quillback
