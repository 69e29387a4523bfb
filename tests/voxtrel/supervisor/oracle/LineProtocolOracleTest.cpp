#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/EffectsReport.h"
#include "support/EngineWords.h"
#include "support/IcuText.h"
#include "support/RandomText.h"

namespace voxtrel {
namespace {

/// The rules for the engine's lines, written a second time over ICU.
/// Thread: one.  Owns: its patterns.  Borrows: nothing.
/// Fails by: an exception, which fails the test.
class LineRules {
 public:
  std::string reportOfChunk(std::string_view chunk) {
    std::string report;
    for (const icu::UnicodeString& line : linesOf(wide(chunk))) report += reportOfLine(line);
    return report;
  }

  std::string reportOfLine(const icu::UnicodeString& line) {
    LineEffects effects;
    if (recording_.find(line, 0)) {
      effects.state = AppState::recording;
    } else if (processing_.find(line, 0)) {
      effects.state = AppState::processing;
    } else if (idle_.find(line, 0)) {
      effects.state = AppState::idle;
    }
    effects.isError = error_.find(line, 0).has_value();
    const std::optional<std::string> text = transcriptionOf(line);
    if (text) effects.transcription = *text;
    return reportOf(narrow(line), effects);
  }

  std::optional<std::string> transcriptionOf(const icu::UnicodeString& line) {
    const auto match = transcription_.find(line, 0);
    if (!match) return std::nullopt;
    const std::int32_t first = match->indexOf(u'"');
    const std::int32_t last = match->lastIndexOf(u'"');
    if (first < 0 || first == last) return std::nullopt;
    return narrow(match->tempSubStringBetween(first + 1, last));
  }

 private:
  IcuPattern recording_{"Recording\\.\\.\\."};
  IcuPattern processing_{"Processing.*audio|audio.*Processing"};
  IcuPattern idle_{"Ready\\.|encode="};
  IcuPattern error_{
      "\\[quillback\\] ERROR|\\[quillback\\] Failed|Audio capture failed|Accessibility|"
      "Microphone permission"};
  IcuPattern transcription_{R"~(\[gpu-decode\] text: "(.*)")~"};
};

TEST(LinesBesideIcu, MeanTheSameInRandomChunks) {
  LineRules rules;
  RandomText random(21);
  int effects = 0;
  for (int round = 0; round < 15'000; ++round) {
    const std::string chunk = random.ofWords(kEngineWords, 30);
    const std::string expected = rules.reportOfChunk(chunk);
    effects += expected.empty() ? 0 : 1;
    ASSERT_EQ(reportByLine(chunk), expected) << testing::PrintToString(chunk);
    ASSERT_EQ(reportByChunk(chunk), expected) << testing::PrintToString(chunk);
  }
  EXPECT_GT(effects, 7'500);
}

TEST(LinesBesideIcu, HoldTheSameTranscriptions) {
  constexpr std::array kWords = {"[gpu-decode] text: \""sv,
                                 "[gpu-decode] text: \""sv,
                                 "[gpu-decode] text: "sv,
                                 "[gpu-decode]"sv,
                                 "\""sv,
                                 "\""sv,
                                 "\\\""sv,
                                 " "sv,
                                 "one"sv,
                                 "\xE6\xBC\xA2"sv,
                                 "\xF0\x9F\x98\x80"sv,
                                 "\0"sv,
                                 "'"sv,
                                 "\t"sv};
  LineRules rules;
  RandomText random(22);
  int found = 0;
  for (int round = 0; round < 30'000; ++round) {
    const std::string line = random.ofWords(kWords, 10);
    const std::optional<std::string> expected = rules.transcriptionOf(wide(line));
    found += expected ? 1 : 0;
    ASSERT_EQ(interpretLine(line).transcription, expected) << testing::PrintToString(line);
  }
  EXPECT_GT(found, 8'000);
  EXPECT_LT(found, 25'000);
}

}  // namespace
}  // namespace voxtrel
