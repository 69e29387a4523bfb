// Runs the fuzz entry on randomly damaged WAV files, the same ones in every run.

#include <array>
#include <cstdio>
#include <random>

#include "fuzz/FuzzEntry.h"
#include "support/WavBytes.h"

namespace {

using voxtrel::quillback::test::WavBytes;

constexpr int kRounds = 20'000;

std::vector<std::uint8_t> inputOf(std::mt19937_64& random) {
  const auto below = [&random](std::uint64_t limit) { return random() % limit; };
  constexpr std::array<unsigned, 6> kBits = {8, 16, 24, 32, 64, 12};
  constexpr std::array<std::uint32_t, 5> kStated = {0, 0xFFFFFFFF, 40, 41, 0x7FFFFFFF};
  const auto encoding = static_cast<unsigned>(1 + 2 * below(2));
  const auto channels = static_cast<unsigned>(below(4));
  const unsigned bits = kBits.at(below(kBits.size()));
  WavBytes file;
  file.riff();
  if (below(3) == 0)
    file.text("LIST").number(below(9), 4).number(random(), static_cast<int>(below(9)));
  if (below(3) == 0) {
    file.extensibleFormat(encoding, channels, 44100, bits);
  } else {
    file.format(encoding, channels, static_cast<unsigned>(below(400'000)), bits);
  }
  file.data(kStated.at(below(kStated.size())));
  for (std::uint64_t words = below(12); words > 0; --words) file.number(random(), 8);
  std::vector<std::uint8_t> bytes = file.bytes();
  for (std::uint64_t damages = below(4); damages > 0; --damages) {
    bytes[below(bytes.size())] = static_cast<std::uint8_t>(random());
  }
  if (below(4) == 0) bytes.resize(below(bytes.size()));
  return bytes;
}

}  // namespace

int main() {
  std::mt19937_64 random(11);
  for (int round = 0; round < kRounds; ++round) {
    const std::vector<std::uint8_t> input = inputOf(random);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::printf("%d inputs\n", kRounds);
}
