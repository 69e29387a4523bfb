#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "support/RealSpeech.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kEnglish = "Hello from the real library, na\u00EFve \u6771\u4EAC.";
constexpr const char* kGerman = "Guten Tag aus K\u00F6ln";
constexpr const char* kTranslated = "So this was translated into English!";
constexpr const char* kRepetitionLine =
    "The recogniser repeated itself; the repetition was left out.";

/// The real library on weights that tests/support/made_weights.py has written; what they say is known. The
/// sound is real, because the voice detection hears it.
struct MadeWeights : RealSpeech {
  static RecogniserOptions made(const std::string& name, const std::string& language = "auto") {
    RecogniserOptions made = options(language);
    made.weightsFile = std::string(MADE_WEIGHTS) + "/" + name + ".bin";
    made.threads = 1;  // so small a model is not faster with more
    if (name == "parakeet") made.family = RecogniserOptions::Family::parakeet;
    return made;
  }

  static std::string said(const RecogniserOptions& options, const std::string& name) {
    return recognise(*load(options), recording(name).samples).text;
  }

  static std::vector<std::string> linesOf(const RecogniserOptions& options) {
    const LoadReport report = makeWhisperBackend(options)->load();
    EXPECT_TRUE(report.isUsable);
    return report.lines;
  }
};

TEST_F(MadeWeights, TheModelsWordsAreSaidWhateverTheSound) {
  for (const char* name : {"en_rear_left", "ja_leopard", "fr_cheetah"}) {
    EXPECT_EQ(said(made("script", "en"), name), kEnglish) << name;
  }
}

TEST_F(MadeWeights, ALongTakeHasTheWordsOfEachPiece) {
  const auto backend = load(made("script", "en"));
  EXPECT_EQ(recognise(*backend, recording("en_michael_talk").samples).text,
            std::string(kEnglish) + " " + kEnglish);
}

TEST_F(MadeWeights, TheTaskOfTheSettingsIsGivenToTheModel) {
  for (const char* language : {"auto", "de", "en"}) {
    RecogniserOptions translated = made("script", language);
    translated.translate = true;
    EXPECT_EQ(said(translated, "de_cheetah"), kTranslated) << language;
  }
}

TEST_F(MadeWeights, TheLanguageThatTheModelFindsIsUsed) {
  EXPECT_EQ(said(made("script", "auto"), "en_jfk"), kGerman);
  EXPECT_EQ(said(made("script", "de"), "en_jfk"), kGerman);
  EXPECT_EQ(said(made("script", "en"), "en_jfk"), kEnglish);
}

TEST_F(MadeWeights, ALanguageThatTheModelLacksIsReportedAndFound) {
  // The library knows it, but only the largest models do.
  const RecogniserOptions cantonese = made("script", "yue");
  EXPECT_THAT(linesOf(cantonese),
              ElementsAre(StartsWith("Using Whisper. "), HasSubstr("does not know")));
  EXPECT_EQ(said(cantonese, "en_jfk"), kGerman);
}

TEST_F(MadeWeights, ATextWithoutAnEndIsCutAndReportedOnce) {
  for (const char* name : {"en_goforward", "en_jfk", "es_veneno_long"}) {
    const Samples samples = recording(name).samples;
    const auto backend = load(made("loop", "en"));
    const Transcription result = recognise(*backend, samples);
    EXPECT_EQ(result.text, kEnglish) << name;
    EXPECT_THAT(result.lines, ElementsAre(kRepetitionLine)) << name;
  }
}

struct MadeParakeet : MadeWeights {};

TEST_F(MadeParakeet, TheSameSoundGivesTheSameWordsWhateverCameBefore) {
  EXPECT_THAT(linesOf(made("parakeet")), ElementsAre(StartsWith("Using Parakeet. ")));
  const auto backend = load(made("parakeet"));
  const Samples samples = recording("en_goforward").samples;
  const std::string text = recognise(*backend, samples).text;
  recognise(*backend, recording("fr_cheetah").samples);
  EXPECT_EQ(recognise(*backend, samples).text, text);
}

TEST_F(MadeParakeet, SoundsOfEveryLengthAreTaken) {
  const auto backend = load(made("parakeet"));
  const Samples speech = recording("en_jfk").samples;
  for (const std::size_t count : {0U, 1U, 511U, 1600U, 4000U, 16'001U}) {
    recognise(*backend, std::span(speech).subspan(20'000, count));
  }
  recognise(*backend, recording("en_michael_talk").samples);
}

TEST_F(MadeParakeet, ADroppedTakeGivesNothingAndTheNextIsWhole) {
  const auto backend = load(made("parakeet"));
  const Samples samples = recording("en_jfk").samples;
  const std::string whole = recognise(*backend, samples).text;
  std::atomic<bool> isDropped{false};
  backend->begin(isDropped);
  backend->feed(samples);
  const std::jthread other([&isDropped] { isDropped = true; });
  EXPECT_EQ(backend->finish().text, "");
  backend->drop();
  EXPECT_EQ(recognise(*backend, samples).text, whole);
}

TEST_F(MadeParakeet, EachSettingThatItCannotFollowGivesOneLine) {
  RecogniserOptions asked = made("parakeet", "ja");
  asked.translate = true;
  asked.words = {"Joanis"};
  const std::vector<std::string> lines = linesOf(asked);
  ASSERT_THAT(lines, SizeIs(4));
  EXPECT_THAT(lines[1], HasSubstr("does not translate"));
  EXPECT_THAT(lines[2], HasSubstr("takes no prompt"));
  EXPECT_THAT(lines[3], HasSubstr("does not know the language"));
  for (std::size_t at = 1; at < lines.size(); ++at) EXPECT_THAT(lines[at], HasSubstr("Whisper"));
  EXPECT_THAT(linesOf(made("parakeet", "de")), SizeIs(1));
}

TEST_F(MadeParakeet, DamagedWeightsAreRefusedWithOneLine) {
  const ScratchFolder scratch;
  RecogniserOptions wrong = made("parakeet");
  const std::string whole = wrong.weightsFile;
  wrong.weightsFile = scratch.path() / "damaged.bin";
  const auto problem = [&wrong] {
    const LoadReport report = makeWhisperBackend(wrong)->load();
    EXPECT_FALSE(report.isUsable);
    EXPECT_THAT(report.lines, SizeIs(1));
    return report.lines.empty() ? "" : report.lines.front();
  };
  std::filesystem::copy_file(whole, wrong.weightsFile);
  for (const std::uintmax_t bytes : {291'000'000U, 300'000U, 1000U, 20U, 0U}) {
    std::filesystem::resize_file(wrong.weightsFile, bytes);
    EXPECT_NE(problem(), "") << bytes;
  }
  wrong.weightsFile = made("script").weightsFile;
  EXPECT_THAT(problem(), HasSubstr("no model of Parakeet"));
  wrong.family = RecogniserOptions::Family::whisper;
  wrong.weightsFile = whole;
  EXPECT_THAT(problem(), HasSubstr("no model of Whisper"));
}

}  // namespace
}  // namespace voxtrel::quillback
