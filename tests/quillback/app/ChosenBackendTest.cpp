#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quillback/app/ChosenBackend.h"

namespace voxtrel::quillback {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using Kind = StoreFault::Kind;
using Weights = tl::expected<StoredModel, StoreFault>;

constexpr const char* kEmbedded = "Using the embedded English recogniser";

Weights fault(Kind kind) {
  return tl::make_unexpected(StoreFault{kind, kind == Kind::damaged ? "a reason" : ""});
}

Weights weightsIn(const std::string& file) {
  StoredModel stored;
  stored.weightsFile = file;
  return stored;
}

const std::vector<Weights> kFaults{fault(Kind::absent), fault(Kind::embedded),
                                   fault(Kind::damaged)};

struct SilentBackend final : RecogniserBackend {
  SilentBackend(bool loads, std::string name) : report{loads, {std::move(name)}} {}
  LoadReport load() override { return report; }
  void begin(const std::atomic<bool>& /*isDropped*/) override {}
  void feed(std::span<const std::int16_t> /*samples*/) override {}
  Transcription finish() override { return {report.lines.front(), {}, {}}; }
  LoadReport report;
};

struct ChosenBackendFixture : testing::Test {
  bool whisperLoads = true;
  bool embeddedLoads = true;
  Weights weights = weightsIn("/weights.bin");
  EngineSettings settings;
  std::string openedWeights;
  LoadReport report;

  /// The name of the backend that was chosen.
  std::string load(bool isWhisperBuiltIn) {
    ChosenBackend::Sources sources;
    sources.isWhisperBuiltIn = isWhisperBuiltIn;
    sources.findWeights = [this] { return weights; };
    sources.whisper = [this](const StoredModel& stored,
                             const ChosenBackend::MakeBackend& fallback) {
      openedWeights = stored.weightsFile;
      return whisperLoads ? std::make_unique<SilentBackend>(true, "whisper") : fallback();
    };
    sources.embedded = [this] {
      return std::make_unique<SilentBackend>(embeddedLoads, "embedded");
    };
    ChosenBackend chosen(std::move(sources), settings);
    report = chosen.load();
    return chosen.finish().text;
  }

  /// The line before those of the backend.
  std::string lineOf(const Weights& found, bool isWhisperBuiltIn = true) {
    weights = found;
    load(isWhisperBuiltIn);
    EXPECT_THAT(report.lines, SizeIs(2));
    return report.lines.front();
  }
};

TEST_F(ChosenBackendFixture, ABuildWithoutWhisperPrintsTheSameLineWhateverTheStoreHolds) {
  for (const Weights& found : {fault(Kind::absent), fault(Kind::embedded), fault(Kind::damaged),
                               weightsIn("/weights.bin")}) {
    weights = found;
    EXPECT_EQ(load(false), "embedded");
    EXPECT_THAT(report.lines, ElementsAre(kEmbedded, "embedded"));
    EXPECT_THAT(openedWeights, IsEmpty());
  }
}

TEST_F(ChosenBackendFixture, TheEmbeddedRecogniserSaysThatItKnowsEnglishOnly) {
  settings.language = "en";
  EXPECT_EQ(lineOf(weights, false), kEmbedded);
  settings.language = "de";
  EXPECT_THAT(lineOf(weights, false),
              AllOf(StartsWith(kEmbedded), HasSubstr("other languages need")));
}

TEST_F(ChosenBackendFixture, CompleteWeightsAreLoaded) {
  EXPECT_EQ(load(true), "whisper");
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre("whisper"));
  EXPECT_EQ(openedWeights, "/weights.bin");
}

TEST_F(ChosenBackendFixture, OtherWeightsAreNotOpened) {
  for (const Weights& found : kFaults) {
    weights = found;
    EXPECT_EQ(load(true), "embedded");
    EXPECT_THAT(openedWeights, IsEmpty());
  }
}

TEST_F(ChosenBackendFixture, EveryProblemIsAnErrorLineThatSaysWhatToRun) {
  for (const Weights& found : kFaults) {
    EXPECT_THAT(lineOf(found), AllOf(StartsWith("[quillback] ERROR "),
                                     HasSubstr("quillback setup --model large-v3"),
                                     HasSubstr("embedded English recogniser")));
  }
  EXPECT_THAT(lineOf(fault(Kind::absent)), HasSubstr("are missing"));
  EXPECT_THAT(lineOf(fault(Kind::embedded)), HasSubstr("before Whisper was built in"));
  EXPECT_THAT(lineOf(fault(Kind::damaged)), HasSubstr("a reason"));
}

TEST_F(ChosenBackendFixture, TheErrorLineNamesTheModelOfTheSettings) {
  settings.model = "small";
  EXPECT_THAT(lineOf(fault(Kind::absent)), HasSubstr("\"quillback setup --model small\""));
}

TEST_F(ChosenBackendFixture, NoLineContainsTheMarkerOfAnother) {
  std::vector<std::string> lines{lineOf(weights, false)};
  for (const Weights& found : kFaults) lines.push_back(lineOf(found));
  settings.language = "de";
  lines.push_back(lineOf(weights, false));
  for (const std::string& line : lines) {
    for (const char* marker : {"Ready.", "Recording...", "Processing", "encode=", "Failed",
                               "Audio capture", "Accessibility", "Microphone", "[gpu-decode]"}) {
      EXPECT_EQ(line.find(marker), std::string::npos) << line;
    }
  }
}

TEST_F(ChosenBackendFixture, WithWeightsThatDoNotLoadALineSaysHowToRepairThem) {
  whisperLoads = false;
  settings.engineModel = "base";
  EXPECT_EQ(load(true), "embedded");
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre("embedded",
                                        "To repair the model, run \"quillback setup "
                                        "--model base\"."));
}

TEST_F(ChosenBackendFixture, TheEnginesOwnModelGoesBeforeTheWindows) {
  settings.engineModel = "parakeet-v3-q4_0";
  EXPECT_THAT(lineOf(fault(Kind::absent)),
              AllOf(HasSubstr("The weights of parakeet-v3-q4_0 are missing"),
                    HasSubstr("setup --model parakeet-v3-q4_0")));
}

TEST_F(ChosenBackendFixture, WithoutAnyModelItIsNotUsable) {
  embeddedLoads = false;
  weights = fault(Kind::absent);
  load(true);
  EXPECT_FALSE(report.isUsable);
}

}  // namespace
}  // namespace voxtrel::quillback
