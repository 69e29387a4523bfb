// Runs the fuzzer's entry function with random input from a fixed seed. An argument sets the number of
// rounds. Fails if too little input was accepted: input that is always refused would test nothing.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "fuzz/FuzzEntry.h"
#include "quillback/model/Manifest.h"
#include "quillback/model/PartFile.h"
#include "quillback/model/RangeRules.h"

namespace {

using namespace voxtrel::quillback;

constexpr int kRounds = 8'000;

class Inputs {
 public:
  std::string next() {
    std::string text = whole();
    // No damage or a little.
    for (std::size_t damages = below(4); damages > 0; --damages) damage(text);
    return text;
  }

 private:
  std::size_t below(std::size_t end) { return random_() % end; }

  std::string whole() {
    const std::string hash(64, "0af"[below(3)]);
    switch (below(5)) {
      case 0:
        return formatManifest({"large-v3", "whisper", {{"a.bin", below(1U << 31), hash}}, "test"});
      case 1:
        return formatManifest({"m", "pocketsphinx", {}, "test", below(2) == 0 ? "" : "base"});
      case 2:
        return formatPartRecord({hash, "\"tag\"", "Mon, 01 Jan 2024 00:00:00 GMT"});
      case 3:
        return "bytes 400-" + std::to_string(998 + below(3)) + "/1000";
      default:
        return std::string(below(200), "[{\"0 "[below(5)]);
    }
  }

  void damage(std::string& text) {
    static constexpr std::array<const char*, 12> kPieces = {
        "\"", "{", "[", "]", ",", "-1", "1e9", "\\u0000", "../", "null", "\xff", "\r\n"};
    const std::size_t at = below(text.size() + 1);
    switch (below(4)) {
      case 0:
        text.insert(at, kPieces[below(kPieces.size())]);
        break;
      case 1:
        text.erase(at, below(20));
        break;
      case 2:
        if (at < text.size()) text[at] = static_cast<char>(below(256));
        break;
      default:
        text.insert(at, text.substr(below(text.size() + 1), below(60)));
    }
  }

  std::mt19937 random_{7};
};

}  // namespace

int main(int argumentCount, char** arguments) {
  const int rounds = argumentCount > 1 ? std::atoi(arguments[1]) : kRounds;
  Inputs inputs;
  int manifests = 0;
  int records = 0;
  int ranges = 0;
  for (int round = 0; round < rounds; ++round) {
    const std::string input = inputs.next();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    manifests += parseManifest(input) ? 1 : 0;
    records += parsePartRecord(input) ? 1 : 0;
    ranges += parseContentRange(input) ? 1 : 0;
  }
  std::printf("%d inputs: %d manifests, %d records and %d ranges were accepted\n", rounds,
              manifests, records, ranges);
  return manifests > rounds / 20 && records > rounds / 20 && ranges > rounds / 40 ? 0 : 1;
}
