// Drives a fuzzer's entry with input that is random but the same in every run. An argument sets the
// number of rounds.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/FuzzEntry.h"
#include "support/ConfigWords.h"
#include "support/EngineWords.h"
#include "support/RandomText.h"
#include "support/SetupWords.h"

namespace {

constexpr int kRounds = 20'000;

std::string inputOf(voxtrel::RandomText& random) {
  switch (random.below(5)) {
    case 0:
      return random.ofWords(voxtrel::kEngineWords, 40);
    case 1:
      return random.damaged(random.ofWords(voxtrel::kEngineWords, 40));
    case 2:
      return random.damaged(random.ofWords(voxtrel::kConfigWords, 60));
    case 3:
      return random.damaged(random.ofWords(voxtrel::kSetupWords, 40));
    default:
      break;
  }
  std::string noise(random.below(300), '\0');
  for (char& byte : noise) byte = static_cast<char>(random.below(256));
  return noise;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int rounds = argumentCount > 1 ? std::atoi(arguments[1]) : kRounds;
  voxtrel::RandomText random(7);
  std::size_t bytes = 0;
  for (int round = 0; round < rounds; ++round) {
    const std::string input = inputOf(random);
    bytes += input.size();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::printf("%d inputs, %zu bytes\n", rounds, bytes);
  return rounds > 0 ? 0 : 1;
}
