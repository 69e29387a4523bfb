#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <tl/expected.hpp>

namespace voxtrel::quillback {

/// The sound of a WAV file, all channels averaged into one.
struct WavSound {
  std::vector<float> samples;  ///< -1 to 1
  int rateHz = 0;              ///< kMinRateHz to kMaxRateHz
  std::string note;            ///< a sentence if the file contradicts its header; else empty
};

/// Why there is no sound.
struct WavError {
  enum class Kind {
    unreadable,  ///< there is no such file, or its bytes cannot be read
    notWav,      ///< not a WAV file, or one of an unsupported kind
  };

  Kind kind;
  std::string message;  ///< a sentence without its full stop
};

inline constexpr int kMinRateHz = 1000;
inline constexpr int kMaxRateHz = 384'000;
inline constexpr int kMaxChannels = 32;

inline constexpr std::size_t kWavHeaderBytes = 44;

/// The start of a WAV file with this many mono samples of 16 bits at kSampleRateHz. The samples follow,
/// in little-endian order; less than 2 GB of them.
std::array<std::uint8_t, kWavHeaderBytes> wavHeader(std::size_t samples);

/// Parses a RIFF WAV file: integer samples of 8, 16, 24 or 32 bits or floating point of 32 or 64, also
/// with the extensible header. Unknown chunks are skipped. A file that was cut short, or whose length
/// was never filled in, gives the samples that are there. (libsndfile takes an unset length for an
/// empty file and has no such notes.)
/// Fails by: the message of a WavError of kind `notWav`.
tl::expected<WavSound, std::string> parseWav(std::span<const std::uint8_t> bytes);

/// Reads and parses the file at `path`, up to 1 GB.
tl::expected<WavSound, WavError> readWav(const std::string& path);

}  // namespace voxtrel::quillback
