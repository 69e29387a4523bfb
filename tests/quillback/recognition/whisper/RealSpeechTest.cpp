#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "quillback/recognition/speech/PiecewiseBackend.h"
#include "quillback/recognition/whisper/SileroDetector.h"
#include "quillback/recognition/whisper/WhisperModel.h"
#include "support/RealSpeech.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Counts what it is given.
struct CountingModel final : SpeechModel {
  explicit CountingModel(std::size_t& samples) : given(samples) {}
  LoadReport load() override { return {true, {"Counting"}}; }
  void begin() override {}
  Heard recognise(std::span<const float> samples, const std::atomic<bool>& /*isDropped*/) override {
    given += samples.size();
    return {.text = " word", .tokens = 1000};
  }
  [[nodiscard]] std::size_t maxSamples() const override { return kSampleRateHz * 24U; }
  std::size_t& given;
};

// What is left then is what one waits for.
TEST_F(RealSpeech, WheneverALongTakeEndsMostOfItWasRecognisedBefore) {
  constexpr std::size_t kMostLeft = kSampleRateHz * 20U;
  constexpr std::size_t kStep = kSampleRateHz / 10;
  for (const char* name : {"es_veneno_long", "en_michael_talk"}) {
    const Samples samples = recording(name).samples;
    std::size_t given = 0;
    PiecewiseBackend backend(
        std::make_unique<CountingModel>(given),
        [file = options("en").voiceDetectionFile] { return SileroDetector::load(file); });
    backend.load();
    const std::atomic<bool> isDropped{false};
    backend.begin(isDropped);
    for (std::size_t at = 0; at < samples.size(); at += kStep) {
      backend.feed(std::span(samples).subspan(at, std::min(kStep, samples.size() - at)));
      EXPECT_LE(at - std::min(at, given), kMostLeft) << name;
    }
    EXPECT_GT(given, 0U);
    backend.finish();
    EXPECT_LE(samples.size() - given, std::size_t{kSampleRateHz}) << "more than a silent end";
  }
}

TEST_F(RealSpeech, EnglishIsHeardWordForWord) {
  const auto backend = load(options("en"));
  for (const char* name : {"en_jfk", "en_goforward", "en_harvard_spk2_snt2", "en_brooklyn_bridge",
                           "en_arctic_a0024", "en_rear_left", "en_libri_2412_153948_0000"}) {
    const Recording spoken = recording(name);
    // "Ten" is written in digits, one of four words.
    EXPECT_LE(wordErrorRate(recognise(*backend, spoken.samples).text, spoken.text), 0.25) << name;
  }
}

TEST_F(RealSpeech, OtherLanguagesAreHeardInTheirOwnWords) {
  for (const auto& [name, most] :
       {std::pair("de_thorsten_04", 0.0), std::pair("de_css10", 0.2), std::pair("fr_leopard", 0.2),
        std::pair("es_css10", 0.0), std::pair("pt_leopard", 0.0), std::pair("it_css10", 0.4)}) {
    const Recording spoken = recording(name);
    const auto backend = load(options(spoken.language));
    EXPECT_LE(wordErrorRate(recognise(*backend, spoken.samples).text, spoken.text), most) << name;
  }
  const auto japanese = load(options("ja"));
  EXPECT_THAT(recognise(*japanese, recording("ja_leopard").samples).text,
              HasSubstr("\u5BA2\u89B3\u7684\u5B9F\u5728\u306E\u5224\u65AD\u7684\u77E5\u8B58"));
}

TEST_F(RealSpeech, TheLanguageIsFoundAndTheWordsAreThoseOfTheSetLanguage) {
  const auto any = load(options("auto"));
  for (const char* name :
       {"de_thorsten_01", "fr_cheetah", "es_veneno_c", "en_cheetah", "ru_css10", "ja_leopard"}) {
    const Recording spoken = recording(name);
    const auto one = load(options(spoken.language));
    EXPECT_EQ(recognise(*any, spoken.samples).text, recognise(*one, spoken.samples).text) << name;
  }
}

TEST_F(RealSpeech, ForeignSpeechIsTranslatedToEnglish) {
  RecogniserOptions translated = options("de");
  translated.translate = true;
  const auto backend = load(translated);
  EXPECT_THAT(recognise(*backend, recording("de_thorsten_04").samples).text, HasSubstr("plan"));
}

TEST_F(RealSpeech, NoTakeIsHeardInALaterOne) {
  const std::vector<const char*> names = {"en_goforward", "en_libri_2412_153948_0000",
                                          "en_sonnet1_b", "en_rear_left"};
  const auto used = load(options("en"));
  recognise(*used, recording("es_mls_austen").samples);
  recognise(*used, recording("en_michael_talk").samples);
  for (const char* name : names) {
    const auto fresh = load(options("en"));
    const Samples samples = recording(name).samples;
    EXPECT_EQ(recognise(*used, samples).text, recognise(*fresh, samples).text) << name;
  }
}

TEST_F(RealSpeech, TheEncoderRunsOverWholeBlocksOfPositionsOnly) {
  for (std::size_t samples = 0; samples <= 24U * kSampleRateHz; samples += 1000) {
    const int positions = WhisperModel::encoderPositions(samples);
    EXPECT_EQ(positions % 256, 0);
    EXPECT_GE(positions, 512);
    EXPECT_LT(positions, 1500);
    EXPECT_GE(positions * 320, static_cast<int>(samples));
  }
}

TEST_F(RealSpeech, SoundsThatAreNotSpeechGiveNoWords) {
  const auto backend = load(options("auto"));
  int sounds = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder() + "/sounds")) {
    for (const float gain : {1.0F, 0.1F}) {
      EXPECT_EQ(recognise(*backend, samplesOf(entry.path(), gain)).text, "")
          << entry.path() << gain;
    }
    ++sounds;
  }
  EXPECT_GE(sounds, 12);
}

TEST_F(RealSpeech, SpeechIntoABadlySetMicrophoneIsHeard) {
  const auto backend = load(options("en"));
  constexpr float kMinus20Db = 0.1F;
  constexpr float kMinus40Db = 0.01F;
  constexpr float kMinus50Db = 0.003F;
  for (const float gain : {kMinus20Db, kMinus40Db, kMinus50Db}) {
    for (const char* name : {"en_rear_left", "en_front_center", "en_goforward", "en_jfk"}) {
      EXPECT_NE(recognise(*backend, recording(name, gain).samples).text, "") << name << gain;
    }
  }
}

TEST_F(RealSpeech, SpeechInNoiseIsHeard) {
  const auto backend = load(options("en"));
  Samples samples = recording("en_jfk").samples;
  std::mt19937 generator(7);
  std::normal_distribution<double> noise(0, 700);
  for (std::int16_t& sample : samples) {
    sample = static_cast<std::int16_t>(std::clamp(sample + noise(generator), -32768.0, 32767.0));
  }
  EXPECT_THAT(recognise(*backend, samples).text, HasSubstr("country"));
}

TEST_F(RealSpeech, AMomentOfSpeechIsHeardAsIfNothingWasBefore) {
  RecogniserOptions english = options("en");
  english.threads = 2;
  WhisperModel used(english);
  WhisperModel fresh(english);
  ASSERT_TRUE(used.load().isUsable && fresh.load().isUsable);
  const std::atomic<bool> isDropped{false};
  const auto floats = [](const Samples& samples) {
    std::vector<float> all;
    for (const std::int16_t sample : samples) all.push_back(static_cast<float>(sample) / 32768.0F);
    return all;
  };
  const std::vector<float> longer = floats(recording("en_libri_2412_153948_0000").samples);
  const std::vector<float> speech = floats(recording("en_jfk").samples);
  for (const std::size_t start : {20'000U, 40'000U, 60'000U}) {
    used.recognise(longer, isDropped);
    const auto moment = std::span(speech).subspan(start, 1500);
    EXPECT_EQ(used.recognise(moment, isDropped).text, fresh.recognise(moment, isDropped).text);
  }
}

TEST_F(RealSpeech, AMomentOfAnySoundGivesNothingAndHarmsNothing) {
  const auto backend = load(options("auto"));
  const Samples speech = recording("en_jfk").samples;
  for (const std::size_t count : {0U, 1U, 160U, 511U, 512U, 3200U}) {
    const auto moment = std::span(speech).subspan(20'000, count);
    EXPECT_LE(recognise(*backend, moment).text.size(), 20U) << count;
  }
}

TEST_F(RealSpeech, ALongTextLosesAndDoublesNoWordAtItsSeams) {
  const Recording spoken = recording("es_veneno_long");
  const auto backend = load(options("es"));
  recognise(*backend, recording("es_veneno_c").samples);  // then it knows how fast it is
  const std::string text = recognise(*backend, spoken.samples).text;
  EXPECT_LE(wordErrorRate(text, spoken.text), 0.2) << text;
  const auto heard = static_cast<double>(plainWords(text).size());
  EXPECT_NEAR(heard, static_cast<double>(plainWords(spoken.text).size()), 6) << text;
}

TEST_F(RealSpeech, ADroppedTakeCostsNothingAndTheNextIsWhole) {
  const auto backend = load(options("en"));
  const Recording spoken = recording("en_goforward");
  std::atomic<bool> isDropped{false};
  backend->begin(isDropped);
  backend->feed(spoken.samples);
  isDropped = true;
  const Transcription dropped = backend->finish();
  EXPECT_EQ(dropped.text, "");
  EXPECT_EQ(dropped.encode.count(), 0);
  EXPECT_THAT(recognise(*backend, spoken.samples).text, HasSubstr("meters"));
}

TEST_F(RealSpeech, TheTimesOfEncoderAndDecoderAreTold) {
  const auto backend = load(options("auto"));
  const Transcription result = recognise(*backend, recording("en_goforward").samples);
  EXPECT_GT(result.encode.count(), 0);
  EXPECT_GT(result.decode.count(), 0);
}

TEST_F(RealSpeech, NamesOfTheSettingsAreSpelledAsThere) {
  const Samples samples = recording("fr_joanis_a").samples;
  EXPECT_THAT(recognise(*load(options("fr")), samples).text, HasSubstr("Joannis"));
  RecogniserOptions named = options("fr");
  named.words = {"Joanis", "CNRC"};
  EXPECT_THAT(recognise(*load(named), samples).text, HasSubstr("Joanis"));
  named.words.clear();
  named.prompt = "Joanis, CNRC";
  EXPECT_THAT(recognise(*load(named), samples).text, HasSubstr("Joanis"));
}

// Each of them is so near to what is said that the decoder is told of it.
TEST_F(RealSpeech, WordsThatNobodySaysChangeNothing) {
  for (const auto& [language, names] : std::map<std::string, std::vector<const char*>>{
           {"en", {"en_goforward", "en_harvard_spk2_snt2"}},
           {"de", {"de_thorsten_01"}},
           {"es", {"es_veneno_c"}}}) {
    RecogniserOptions named = options(language);
    named.words = {"Joanis", "CNRC", "Goforth", "Northmoor", "Schokoban", "Yastrov"};
    const auto told = load(named);
    const auto plain = load(options(language));
    for (const char* name : names) {
      const Samples samples = recording(name).samples;
      EXPECT_EQ(recognise(*told, samples).text, recognise(*plain, samples).text) << name;
    }
  }
}

TEST_F(RealSpeech, APromptThatDoesNotFitChangesNoMeaning) {
  RecogniserOptions named = options("en");
  named.prompt = "Joanis, CNRC";
  const auto backend = load(named);
  for (const char* name : {"en_jfk", "en_goforward", "en_harvard_spk2_snt2"}) {
    const Recording spoken = recording(name);
    const std::string text = recognise(*backend, spoken.samples).text;
    EXPECT_LE(wordErrorRate(text, spoken.text), 0.25) << text;
    EXPECT_THAT(text, Not(HasSubstr("Joanis")));
  }
}

TEST_F(RealSpeech, AnUnknownLanguageIsReportedAndFound) {
  const auto backend = makeWhisperBackend(options("klingon"));
  const LoadReport report = backend->load();
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines.back(), HasSubstr("does not know the language"));
  EXPECT_THAT(recognise(*backend, recording("de_thorsten_04").samples).text, HasSubstr("Plan"));
}

TEST_F(RealSpeech, OtherFilesInTheModelsPlaceAreRefusedWithOneLine) {
  ScratchFolder scratch;
  RecogniserOptions wrong = options("en");
  const auto problem = [&wrong] {
    const LoadReport report = makeWhisperBackend(wrong)->load();
    EXPECT_FALSE(report.isUsable);
    EXPECT_EQ(report.lines.size(), 1U);
    return report.lines.front();
  };
  wrong.weightsFile = folder() + "/ggml-silero-v6.2.0.bin";
  EXPECT_THAT(problem(), HasSubstr("no model of Whisper"));
  wrong.weightsFile = scratch.path() / "cut.bin";
  std::filesystem::copy_file(folder() + "/ggml-base.bin", wrong.weightsFile);
  std::filesystem::permissions(wrong.weightsFile, std::filesystem::perms::owner_all);
  for (const auto& [bytes, why] :
       {std::pair(100'000'000, "within its weights"), std::pair(300'000, "within its vocabulary"),
        std::pair(1000, "within its filters"), std::pair(20, "no model of Whisper")}) {
    std::filesystem::resize_file(wrong.weightsFile, static_cast<std::uintmax_t>(bytes));
    EXPECT_THAT(problem(), HasSubstr(why));
  }
}

TEST_F(RealSpeech, WithoutVoiceDetectionSpeechIsHeardAndSilenceIsNot) {
  RecogniserOptions plain = options("en");
  plain.voiceDetectionFile = "";
  const auto backend = makeWhisperBackend(plain);
  EXPECT_THAT(backend->load().lines.back(), HasSubstr("voice detection is missing"));
  EXPECT_THAT(recognise(*backend, recording("en_goforward").samples).text, HasSubstr("meters"));
  EXPECT_EQ(recognise(*backend, Samples(32'000)).text, "");
}

TEST(RepetitionTest, OnlyManyTimesTheSameIsARepetition) {
  const auto repeated = [](std::vector<int> phrase, int times) {
    std::vector<int> tokens = {90, 91};
    for (int at = 0; at < times; ++at) tokens.insert(tokens.end(), phrase.begin(), phrase.end());
    return std::pair(lengthWithoutRepetition(tokens), tokens.size());
  };
  EXPECT_EQ(repeated({1}, 7), std::pair(std::size_t{9}, std::size_t{9}));
  EXPECT_EQ(repeated({1}, 8), std::pair(std::size_t{3}, std::size_t{10}));
  EXPECT_EQ(repeated({1, 2, 3}, 8), std::pair(std::size_t{5}, std::size_t{26}));
  EXPECT_EQ(repeated({1, 2, 3, 4, 5, 6, 7, 8}, 2).first, 18U);
  EXPECT_EQ(repeated({1, 2, 3, 4, 5, 6, 7, 8}, 3).first, 10U);
}

}  // namespace
}  // namespace voxtrel::quillback
