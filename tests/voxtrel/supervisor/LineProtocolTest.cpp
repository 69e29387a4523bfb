#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Blanks.h"
#include "support/EffectsReport.h"
#include "support/EngineWords.h"
#include "support/RandomText.h"
#include "voxtrel/supervisor/LineProtocol.h"

namespace voxtrel {
namespace {

std::optional<AppState> stateAfter(std::string_view line) {
  return interpretLine(line).state;
}

TEST(EngineLine, TellsTheStateByItsMarker) {
  EXPECT_EQ(stateAfter("12:03 Recording... (hold the key)"), AppState::recording);
  EXPECT_EQ(stateAfter("Processing 1.2 s of audio"), AppState::processing);
  EXPECT_EQ(stateAfter("audio: Processing"), AppState::processing);
  EXPECT_EQ(stateAfter("[quillback] Ready. Hold the key"), AppState::idle);
  EXPECT_EQ(stateAfter("mel=1 encode=12"), AppState::idle);
  EXPECT_EQ(stateAfter("[quillback] loading the model"), std::nullopt);
  EXPECT_EQ(stateAfter(""), std::nullopt);
}

TEST(EngineLine, TakesTheFirstStateThatApplies) {
  EXPECT_EQ(stateAfter("Ready. Processing audio Recording..."), AppState::recording);
  EXPECT_EQ(stateAfter("Ready. encode= Processing audio"), AppState::processing);
}

TEST(EngineLine, IsNotProcessingWithoutAudio) {
  EXPECT_EQ(stateAfter("Processing tensors"), std::nullopt);
  EXPECT_EQ(stateAfter("Processing Audio"), std::nullopt);
  EXPECT_EQ(stateAfter("audio"), std::nullopt);
  EXPECT_EQ(stateAfter("Processing done, Ready."), AppState::idle);
  EXPECT_EQ(stateAfter("Processing took encode=7"), AppState::idle);
}

TEST(EngineLine, IsReadWithItsCaseAndToTheLetter) {
  for (const std::string_view line :
       {"recording..."sv, "RECORDING..."sv, "Recording.."sv, "Recording"sv, "ready."sv, "Ready"sv,
        "Encode="sv, "encode ="sv, "[Quillback] ERROR"sv, "[quillback] Error"sv,
        "[quillback]  Failed"sv, "audio capture failed"sv, "accessibility"sv,
        "microphone permission"sv, "[GPU-decode] text: \"a\""sv}) {
    EXPECT_EQ(reportOf(line, interpretLine(line)), "") << line;
  }
}

TEST(EngineLine, IsAnErrorByAnyOfItsFiveTexts) {
  for (const std::string_view error :
       {"[quillback] ERROR"sv, "[quillback] Failed"sv, "Audio capture failed"sv, "Accessibility"sv,
        "Microphone permission"sv}) {
    const std::string line = " 1: " + std::string(error) + " ";
    EXPECT_EQ(reportOf(line, interpretLine(line)), "error line<" + line + ">\n");
  }
}

TEST(EngineLine, CanSayAllThreeThingsAtOnce) {
  const std::string line = R"(Ready. Accessibility [gpu-decode] text: "hello")";
  EXPECT_EQ(reportOf(line, interpretLine(line)), "idle error text<hello> line<" + line + ">\n");
}

TEST(EngineTranscription, RunsFromTheFirstToTheLastQuote) {
  EXPECT_EQ(interpretLine(R"([gpu-decode] text: "hello there")").transcription, "hello there");
  EXPECT_EQ(interpretLine(R"(9 [gpu-decode] text: " a "b" c " (12 ms))").transcription,
            R"( a "b" c )");
  EXPECT_EQ(interpretLine(R"([gpu-decode] text: "a" and "b")").transcription, R"(a" and "b)");
  EXPECT_EQ(interpretLine(R"([gpu-decode] text: "a\"b")").transcription, R"(a\"b)");
  EXPECT_EQ(interpretLine("[gpu-decode] text: \"gr\xC3\xBC\xC3\x9F\x65\"").transcription,
            "gr\xC3\xBC\xC3\x9F\x65");
}

TEST(EngineTranscription, CanBeEmpty) {
  EXPECT_EQ(interpretLine(R"([gpu-decode] text: "")").transcription, "");
}

TEST(EngineTranscription, StartsAtTheFirstOpeningOfSeveral) {
  EXPECT_EQ(interpretLine(R"([gpu-decode] text: "a" [gpu-decode] text: "b")").transcription,
            R"(a" [gpu-decode] text: "b)");
  EXPECT_EQ(interpretLine(R"([gpu-decode] text: "[gpu-decode] text: ")").transcription,
            "[gpu-decode] text: ");
}

TEST(EngineTranscription, IsMissingWithoutItsTwoQuotes) {
  for (const std::string_view line :
       {R"([gpu-decode] text: "hello)"sv, R"("[gpu-decode] text: hello")"sv,
        R"([gpu-decode] text:"hello")"sv, R"([gpu-decode]text: "hello")"sv,
        R"(gpu-decode] text: "hello")"sv, R"("[gpu-decode] text: ")"sv}) {
    EXPECT_EQ(interpretLine(line).transcription, std::nullopt) << line;
  }
}

TEST(EngineChunk, GivesItsLinesInOrder) {
  EXPECT_EQ(reportByChunk("Ready.\nRecording...\n"),
            "idle line<Ready.>\nrecording line<Recording...>\n");
}

TEST(EngineChunk, IsCutAtEveryNewlineCharacter) {
  for (const std::string_view newline : kNewlines) {
    const std::string chunk = "x" + std::string(newline) + " Ready. " + std::string(newline) + "y";
    EXPECT_EQ(reportByChunk(chunk), "idle line< Ready. >\n") << testing::PrintToString(newline);
  }
}

TEST(EngineChunk, DoesNotJoinAMarkerAcrossANewlineOrTwoChunks) {
  EXPECT_EQ(reportByChunk("Record\ning...\nProcessing\naudio\n"), "");
  EXPECT_EQ(reportByChunk("Recor") + reportByChunk("ding...\n"), "");
}

TEST(EngineChunk, FindsEachMarkerAtEveryPlaceOfLongChunks) {
  for (const std::string_view line :
       {"Recording..."sv, "Processing audio"sv, "Ready."sv, "encode="sv, "[quillback] ERROR"sv,
        "[quillback] Failed"sv, "Audio capture failed"sv, "Accessibility"sv,
        "Microphone permission"sv, "[gpu-decode] text: \"\""sv}) {
    const std::string expected = reportOf(line, interpretLine(line));
    ASSERT_NE(expected, "");
    for (std::size_t place = 0; place < 200; ++place) {
      const std::string chunk = std::string(place, '\n') + std::string(line);
      ASSERT_EQ(reportByChunk(chunk), expected) << line << " at the end, " << place;
      ASSERT_EQ(reportByChunk(chunk + std::string(90, '\n')), expected) << line << ", " << place;
    }
  }
}

TEST(EngineChunk, ReadsNothingBeyondItsEnd) {
  const std::string text = "Ready.\nRecording...\n[gpu-decode] text: \"one\" encode=";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    // What follows would complete a marker.
    const std::string_view chunk = std::string_view(text).substr(0, size);
    EXPECT_EQ(reportByChunk(chunk), reportByLine(std::string(chunk)));
  }
}

TEST(EngineChunk, DoesWhatItsLinesDoOneByOne) {
  RandomText random(2);
  int effects = 0;
  for (int round = 0; round < 20'000; ++round) {
    std::string chunk = random.ofWords(kEngineWords, 40);
    if (round % 2 == 1) chunk = random.damaged(chunk);
    const std::string expected = reportByLine(chunk);
    effects += expected.empty() ? 0 : 1;
    ASSERT_EQ(reportByChunk(chunk), expected) << testing::PrintToString(chunk);
  }
  EXPECT_GT(effects, 10'000);  // the chunks are worth the trial
}

TEST(EngineChunk, TakesALineOfManyMarkersInOneGo) {
  std::string chunk;
  while (chunk.size() < 1'000'000) chunk += "Processing ";
  std::size_t count = 0;
  interpretChunk(chunk + "audio", [&count](auto, const auto&) { ++count; });
  EXPECT_EQ(count, 1U);
}

TEST(HiddenWords, AreNeverSeenWhereverTheOutputIsCut) {
  const std::string output =
      "one\n[gpu-[gpu-decode] text: \"words \"[gpu-decode] text: \" w\"ords\" words\nReady.\n";
  const std::string shown = "one\n[gpu-[gpu-decode] text: \"…\"\nReady.\n";
  for (std::size_t first = 0; first <= output.size(); ++first) {
    for (std::size_t second = first; second <= output.size(); ++second) {
      WordHider hider;
      std::string all = hider.withoutWords(output.substr(0, first));
      all += hider.withoutWords(output.substr(first, second - first));
      all += hider.withoutWords(output.substr(second));
      ASSERT_EQ(all, shown) << first << " " << second;
    }
  }
}

}  // namespace
}  // namespace voxtrel
