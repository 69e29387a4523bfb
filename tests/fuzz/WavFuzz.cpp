// Any bytes as a WAV file: nothing breaks, and what comes out holds together.

#include <cmath>
#include <string>
#include <vector>

#include "fuzz/FuzzEntry.h"
#include "quillback/audio/WavFile.h"

using voxtrel::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of just this size, so that reading beyond the end is seen.
  const std::vector<std::uint8_t> bytes(data, data + size);
  const voxtrel::quillback::WavReading wav = voxtrel::quillback::parseWav(bytes);
  require(wav.isReadable, "bytes are readable");
  require(wav.samples.size() <= size, "no sample comes from nowhere");
  if (!wav.error.empty()) {
    require(wav.samples.empty() && wav.note.empty() && wav.rateHz == 0, "an error stands alone");
    require(wav.error.find('\n') == std::string::npos, "an error is one line");
    return 0;
  }
  require(wav.rateHz >= voxtrel::quillback::kLowestRateHz &&
              wav.rateHz <= voxtrel::quillback::kHighestRateHz,
          "the rate is one that can be used");
  for (const float sample : wav.samples) {
    require(std::abs(sample) <= 1.0F, "samples are fractions of one");
  }
  return 0;
}
