#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quillback/app/ChosenEngine.h"
#include "quillback/app/RecogniserChoice.h"

namespace voxtrel::quillback {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Kind = StoreState::Kind;

constexpr const char* kEmbedded = "Using the embedded English recogniser";

StoreState store(Kind kind) {
  return {kind, kind == Kind::complete ? "/weights.bin" : "",
          kind == Kind::damaged ? "a reason" : ""};
}

TEST(RecogniserChoice, ABuildWithoutWhisperSaysOneLineWhateverTheStoreHolds) {
  for (const Kind kind : {Kind::absent, Kind::embedded, Kind::complete, Kind::damaged}) {
    const RecogniserChoice choice = chooseRecogniser(false, store(kind), "auto");
    EXPECT_FALSE(choice.isWhisper);
    EXPECT_EQ(choice.line, kEmbedded);
  }
}

TEST(RecogniserChoice, TheEmbeddedRecogniserSaysThatItKnowsNoOtherLanguage) {
  EXPECT_EQ(embeddedLine("en"), kEmbedded);
  EXPECT_THAT(embeddedLine("de"), AllOf(StartsWith(kEmbedded), HasSubstr("other languages need")));
}

TEST(RecogniserChoice, WhisperWorksOnlyWithWholeWeights) {
  EXPECT_TRUE(chooseRecogniser(true, store(Kind::complete), "auto").isWhisper);
  for (const Kind kind : {Kind::absent, Kind::embedded, Kind::damaged}) {
    EXPECT_FALSE(chooseRecogniser(true, store(kind), "auto").isWhisper);
  }
}

TEST(RecogniserChoice, EveryProblemIsAnErrorLineThatSaysWhatToRun) {
  const auto line = [](Kind kind) { return chooseRecogniser(true, store(kind), "auto").line; };
  for (const Kind kind : {Kind::absent, Kind::embedded, Kind::damaged}) {
    EXPECT_THAT(line(kind), AllOf(StartsWith("[quillback] ERROR "),
                                  HasSubstr("quillback setup --model large-v3"),
                                  HasSubstr("embedded English recogniser")));
  }
  EXPECT_THAT(line(Kind::absent), HasSubstr("are missing"));
  EXPECT_THAT(line(Kind::embedded), HasSubstr("before Whisper was built in"));
  EXPECT_THAT(line(Kind::damaged), HasSubstr("a reason"));
}

TEST(RecogniserChoice, NoLinePassesForAnotherMessage) {
  std::vector<std::string> lines = {embeddedLine("auto"), embeddedLine("de")};
  for (const Kind kind : {Kind::absent, Kind::embedded, Kind::damaged}) {
    lines.push_back(chooseRecogniser(true, store(kind), "auto").line);
  }
  for (const std::string& line : lines) {
    for (const char* marker : {"Ready.", "Recording...", "Processing", "encode=", "Failed",
                               "Audio capture", "Accessibility", "Microphone", "[gpu-decode]"}) {
      EXPECT_EQ(line.find(marker), std::string::npos) << line;
    }
  }
}

struct StillEngine final : SpeechEngine {
  StillEngine(bool loads, std::string name) : report{loads, {std::move(name)}} {}
  LoadReport load() override { return report; }
  void begin(const std::atomic<bool>& /*isDropped*/) override {}
  void hear(std::span<const std::int16_t> /*samples*/) override {}
  Transcription finish() override { return {report.lines.front(), {}, {}}; }
  LoadReport report;
};

struct Engines {
  bool whisperLoads = true;
  bool embeddedLoads = true;
  Kind kind = Kind::complete;
  std::string openedWeights;

  std::unique_ptr<ChosenEngine> chosen(bool isWhisperBuiltIn) {
    ChosenEngine::Sources sources;
    sources.isWhisperBuiltIn = isWhisperBuiltIn;
    sources.store = [this] { return store(kind); };
    sources.whisper = [this](const std::string& weightsFile) {
      openedWeights = weightsFile;
      return std::make_unique<StillEngine>(whisperLoads, "whisper");
    };
    sources.embedded = [this] { return std::make_unique<StillEngine>(embeddedLoads, "embedded"); };
    return std::make_unique<ChosenEngine>(std::move(sources), "auto");
  }
};

TEST(ChosenEngine, WholeWeightsAreLoaded) {
  Engines engines;
  const auto engine = engines.chosen(true);
  const LoadReport report = engine->load();
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre("whisper"));
  EXPECT_EQ(engines.openedWeights, "/weights.bin");
  EXPECT_EQ(engine->finish().text, "whisper");
}

TEST(ChosenEngine, WeightsThatDoNotLoadGiveAnErrorLineAndTheEmbeddedEngine) {
  Engines engines{.whisperLoads = false, .openedWeights = {}};
  const auto engine = engines.chosen(true);
  const LoadReport report = engine->load();
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre(StartsWith("[quillback] ERROR "), "embedded"));
  EXPECT_EQ(engine->finish().text, "embedded");
}

TEST(ChosenEngine, WithoutWhisperTheWeightsAreNotTouched) {
  Engines engines;
  const auto engine = engines.chosen(false);
  EXPECT_THAT(engine->load().lines, ElementsAre(kEmbedded, "embedded"));
  EXPECT_THAT(engines.openedWeights, IsEmpty());
}

TEST(ChosenEngine, WithoutAnyModelItSaysThatItIsOfNoUse) {
  Engines engines{.embeddedLoads = false, .kind = Kind::absent, .openedWeights = {}};
  EXPECT_FALSE(engines.chosen(true)->load().isUsable);
}

}  // namespace
}  // namespace voxtrel::quillback
