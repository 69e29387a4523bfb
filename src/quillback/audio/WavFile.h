#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace voxtrel::quillback {

/// What a WAV file holds, all channels averaged into one.
struct WavReading {
  std::vector<float> samples;  ///< -1 to 1
  int rateHz = 0;
  std::string note;  ///< one sentence where the file is not quite what it says; else empty
  std::string
      error;  ///< one sentence, without a full stop; where there is one, nothing else is set
  bool isReadable = true;  ///< false: there is no such file, or its bytes cannot be had
};

/// Lowest and highest sample rate that is taken for one.
inline constexpr int kLowestRateHz = 1000;
inline constexpr int kHighestRateHz = 384'000;
/// More channels than any recording of speech has.
inline constexpr int kMostChannels = 32;

/// Reads the bytes of a WAV file: RIFF, integer samples of 8, 16, 24 or 32 bits or floating point of
/// 32 or 64, also under the extensible format's header. Unknown chunks are passed over. A file that
/// was cut short, or whose length was never filled in, gives what is there. Our own reader, because
/// this is a table of chunks; a library for thirty formats would have to be kept from the others.
WavReading parseWav(std::span<const std::uint8_t> bytes);

/// Reads the WAV file at `path`, up to 1 GB of it.
WavReading readWav(const std::string& path);

}  // namespace voxtrel::quillback
