// Any bytes as the engine's output: nothing breaks, and the fast search finds what the lines hold.

#include <string>
#include <string_view>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"
#include "fuzz/FuzzEntry.h"
#include "support/EffectsReport.h"

using namespace voxtrel;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of just this size, so that reading beyond the end is seen.
  const std::string chunk(data, data + size);
  require(reportByChunk(chunk) == reportByLine(chunk), "a chunk does what its lines do");

  const bool isValid = isValidUtf8(chunk);
  std::size_t lineBytes = 0;
  bool areLinesValid = true;
  forEachLine(chunk, [&](std::string_view line) {
    lineBytes += line.size();
    areLinesValid = areLinesValid && isValidUtf8(line);
    const LineEffects effects = interpretLine(line);
    if (!effects.transcription) return;
    const std::string quoted = "[gpu-decode] text: \"" + std::string(*effects.transcription) + '"';
    require(line.find(quoted) != std::string_view::npos, "a transcription stands in its line");
  });
  require(lineBytes <= size, "lines are parts of their chunk");
  require(areLinesValid || !isValid, "lines of UTF-8 are UTF-8");
  return 0;
}
