// Parses any bytes as a WAV file and checks that the result is consistent.

#include <cmath>
#include <string>
#include <vector>

#include "fuzz/FuzzEntry.h"
#include "support/WholeWav.h"

using voxtrel::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of exactly this size, so that the sanitizer sees reads beyond the end.
  const std::vector<std::uint8_t> bytes(data, data + size);
  const auto wav = voxtrel::quillback::test::parseWav(bytes);
  if (!wav) {
    require(!wav.error().empty(), "an error says why");
    require(wav.error().find('\n') == std::string::npos, "an error is one line");
    return 0;
  }
  require(wav->samples.size() <= size, "there is a byte for every sample");
  require(wav->rateHz >= voxtrel::quillback::kMinRateHz &&
              wav->rateHz <= voxtrel::quillback::kMaxRateHz,
          "the rate can be resampled");
  for (const float sample : wav->samples) {
    require(std::abs(sample) <= 1.0F, "samples are from -1 to 1");
  }
  return 0;
}
