#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "quillback/recognition/speech/PiecewiseBackend.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::int16_t kLoud = 8000;
constexpr std::int16_t kQuiet = 80;

/// What a model was given and what it says.
struct FakeModel {
  std::vector<std::vector<float>> pieces;
  std::function<Heard()> answer = [] { return Heard{.text = " word"}; };
  std::size_t maxSamples = std::size_t{kSampleRateHz} * 24;
  LoadReport report{true, {"Using a fake"}};
};

struct FakeModelAdapter final : SpeechModel {
  explicit FakeModelAdapter(FakeModel& fake) : fake_(fake) {}
  LoadReport load() override { return fake_.report; }
  void begin() override {}
  Heard recognise(std::span<const float> samples, const std::atomic<bool>& /*isDropped*/) override {
    fake_.pieces.emplace_back(samples.begin(), samples.end());
    return fake_.answer();
  }
  std::size_t maxSamples() const override { return fake_.maxSamples; }
  FakeModel& fake_;
};

/// Hears speech in every frame whose peak is at least a quarter of the full scale.
struct PeakDetector final : VoiceDetector {
  void reset() override {}
  float probability(std::span<const float> frame) override {
    return *std::ranges::max_element(frame) >= 0.25F ? 1.0F : 0.0F;
  }
};

struct PiecewiseBackendTest : testing::Test {
  PiecewiseBackendTest()
      : backend(std::make_unique<FakeModelAdapter>(model),
                [] { return std::make_unique<PeakDetector>(); }) {
    backend.load();
    backend.begin(isDropped);
  }

  void speak(double seconds, std::int16_t level) {
    backend.feed(
        std::vector<std::int16_t>(static_cast<std::size_t>(seconds * kSampleRateHz), level));
  }

  std::size_t samplesHeard() const {
    return std::accumulate(model.pieces.begin(), model.pieces.end(), std::size_t{0},
                           [](std::size_t sum, const auto& piece) { return sum + piece.size(); });
  }

  FakeModel model;
  std::atomic<bool> isDropped{false};
  PiecewiseBackend backend;
};

TEST_F(PiecewiseBackendTest, ShortSpeechIsRecognisedAsAWholeAtItsEnd) {
  speak(3.7, kLoud);
  EXPECT_THAT(model.pieces, IsEmpty());
  EXPECT_EQ(backend.finish().text, "word");
  ASSERT_THAT(model.pieces, SizeIs(1));
  EXPECT_EQ(model.pieces[0].size(), 59'200U);
  EXPECT_FLOAT_EQ(model.pieces[0][0], 8000.0F / 32768.0F);
}

TEST_F(PiecewiseBackendTest, LongSpeechIsRecognisedAtPausesWhileItIsSpoken) {
  speak(16, kLoud);
  EXPECT_THAT(model.pieces, IsEmpty());
  speak(0.5, 0);
  EXPECT_THAT(model.pieces, SizeIs(1));
  speak(2, kLoud);
  EXPECT_EQ(backend.finish().text, "word word");
  EXPECT_EQ(samplesHeard(), 296'000U) << "a sample was lost or doubled";
}

TEST_F(PiecewiseBackendTest, SpeechWithoutPausesIsCutBeforeTheModelsLimit) {
  speak(60, kLoud);
  backend.finish();
  EXPECT_EQ(samplesHeard(), 960'000U);
  for (const auto& piece : model.pieces) EXPECT_LE(piece.size(), model.maxSamples);
}

TEST_F(PiecewiseBackendTest, WithoutSpeechTheModelIsNotAsked) {
  speak(2, 0);
  EXPECT_EQ(backend.finish().text, "");
  backend.begin(isDropped);
  EXPECT_EQ(backend.finish().text, "");
  EXPECT_THAT(model.pieces, IsEmpty());
}

TEST_F(PiecewiseBackendTest, QuietSpeechIsJudgedAtFullLevel) {
  speak(1, kQuiet);
  EXPECT_EQ(backend.finish().text, "word");
}

TEST_F(PiecewiseBackendTest, QuietSpeechBeforeAClickIsNotLost) {
  speak(0.5, 0);
  speak(0.01, 32767);  // from here on the quiet speech is far below the loudest sound
  speak(20, kQuiet);
  speak(0.5, 0);
  speak(1, kQuiet);
  EXPECT_EQ(backend.finish().text, "word");
}

TEST_F(PiecewiseBackendTest, ADroppedUtteranceIsNotRecognised) {
  speak(3, kLoud);
  isDropped = true;
  speak(30, kLoud);
  EXPECT_THAT(model.pieces, IsEmpty());
}

TEST_F(PiecewiseBackendTest, UtterancesDoNotAffectEachOther) {
  speak(3, kLoud);
  backend.begin(isDropped);
  speak(1, kLoud);
  EXPECT_EQ(backend.finish().text, "word");
  ASSERT_THAT(model.pieces, SizeIs(1));
  EXPECT_EQ(model.pieces[0].size(), 16'000U);
}

struct TooFewWordsTest : PiecewiseBackendTest {
  /// Speech of 10 s with a pause in its middle; the model says these, one after the other.
  std::string heardOf(std::vector<Heard> answers) {
    model.answer = [this, answers = std::move(answers)] {
      return answers.at(model.pieces.size() - 1);
    };
    speak(5, kLoud);
    speak(0.3, 0);
    speak(5, kLoud);
    return backend.finish().text;
  }
};

TEST_F(TooFewWordsTest, ThePartsBeforeAndBehindTheLongestPauseAreRecognised) {
  EXPECT_EQ(heardOf({{.text = " few", .tokens = 9},
                     {.text = " one part", .tokens = 20},
                     {.text = " and another", .tokens = 20}}),
            "one part and another");
  ASSERT_THAT(model.pieces, SizeIs(3));
  EXPECT_EQ(model.pieces[1].size() + model.pieces[2].size(), model.pieces[0].size());
  EXPECT_NEAR(static_cast<double>(model.pieces[1].size()), 5.15 * kSampleRateHz, 1000);
}

TEST_F(TooFewWordsTest, TheWholeCountsWhereItsPartsSayNoMore) {
  EXPECT_EQ(heardOf({{.text = " whole", .tokens = 9},
                     {.text = " one part", .tokens = 4},
                     {.text = " and another", .tokens = 5}}),
            "whole");
}

TEST_F(TooFewWordsTest, TheWholeCountsWhereTheModelSaysTheSameOfBothParts) {
  EXPECT_EQ(heardOf({{.text = " Thank you.", .tokens = 9},
                     {.text = " Thank you.", .tokens = 9},
                     {.text = " Thank you.", .tokens = 9}}),
            "Thank you.");
}

TEST_F(TooFewWordsTest, EnoughWordsAreRecognisedOnce) {
  EXPECT_EQ(heardOf({{.text = " enough", .tokens = 30}}), "enough");
}

TEST_F(TooFewWordsTest, SpeechWithoutAPauseIsRecognisedOnce) {
  model.answer = [] { return Heard{.text = " few", .tokens = 9}; };
  speak(10, kLoud);
  EXPECT_EQ(backend.finish().text, "few");
  EXPECT_THAT(model.pieces, SizeIs(1));
}

TEST_F(PiecewiseBackendTest, ARepetitionIsReportedAndRemarksAreLeftOut) {
  model.answer = [] { return Heard{" [Music] Hello.", true}; };
  speak(1, kLoud);
  const Transcription result = backend.finish();
  EXPECT_EQ(result.text, "Hello.");
  EXPECT_THAT(result.lines,
              ElementsAre("The recogniser repeated itself; the repetition was left out."));
}

TEST_F(PiecewiseBackendTest, WhatIsRepeatedInEveryPieceIsLeftOutAndReportedOnce) {
  model.answer = [] { return Heard{" This is what it says of any sound.", true}; };
  speak(120, kLoud);
  const Transcription result = backend.finish();
  EXPECT_GT(model.pieces.size(), 4U);
  EXPECT_EQ(result.text, "This is what it says of any sound.");
  EXPECT_THAT(result.lines,
              ElementsAre("The recogniser repeated itself; the repetition was left out."));
}

TEST_F(PiecewiseBackendTest, SoundThatTheModelFailsOnIsReportedOnce) {
  model.answer = [this] {
    Heard heard{model.pieces.size() == 1 ? " word" : ""};
    heard.hasFailed = model.pieces.size() > 1;
    return heard;
  };
  speak(80, kLoud);
  const Transcription result = backend.finish();
  EXPECT_EQ(result.text, "word");
  EXPECT_THAT(result.lines,
              ElementsAre("[quillback] ERROR The model failed, so words are missing; perhaps the "
                          "memory is too small."));
}

TEST_F(PiecewiseBackendTest, WithoutVoiceDetectionTheLoudnessDecidesAndALineSaysSo) {
  PiecewiseBackend plain(std::make_unique<FakeModelAdapter>(model), [] { return nullptr; });
  EXPECT_THAT(plain.load().lines,
              ElementsAre("Using a fake, without voice detection.",
                          "The voice detection is missing, so noise may become words. Run "
                          "\"quillback setup\" to fetch it."));
  plain.begin(isDropped);
  plain.feed(std::vector<std::int16_t>(32'000, kLoud));
  EXPECT_EQ(plain.finish().text, "word");
}

TEST_F(PiecewiseBackendTest, TheLineAtTheStartSaysThatThereIsVoiceDetection) {
  PiecewiseBackend detecting(std::make_unique<FakeModelAdapter>(model),
                             [] { return std::make_unique<PeakDetector>(); });
  EXPECT_THAT(detecting.load().lines, ElementsAre("Using a fake, with voice detection."));
}

TEST_F(PiecewiseBackendTest, AModelThatDoesNotLoadNeedsNoDetector) {
  model.report = {false, {"broken"}};
  bool isAsked = false;
  PiecewiseBackend broken(std::make_unique<FakeModelAdapter>(model), [&isAsked] {
    isAsked = true;
    return nullptr;
  });
  EXPECT_FALSE(broken.load().isUsable);
  EXPECT_FALSE(isAsked);
}

TEST(LoudnessDetectorTest, FramesFarBelowTheLoudestAreSilence) {
  LoudnessDetector detector;
  EXPECT_GT(detector.probability(std::vector<float>(512, 0.5F)), 0.5F);
  EXPECT_GT(detector.probability(std::vector<float>(512, 0.02F)), 0.5F);
  EXPECT_LT(detector.probability(std::vector<float>(512, 0.01F)), 0.5F);
  EXPECT_LT(detector.probability(std::vector<float>(512, 0.0F)), 0.5F);
  detector.reset();
  EXPECT_GT(detector.probability(std::vector<float>(512, 0.01F)), 0.5F);
}

TEST(WithoutRemarksTest, RemarksAndNotesOfMusicAreLeftOut) {
  EXPECT_EQ(withoutRemarks(" [BLANK_AUDIO]"), "");
  EXPECT_EQ(withoutRemarks(" (wind blowing)"), "");
  EXPECT_EQ(withoutRemarks(" *Musik*"), "");
  EXPECT_EQ(withoutRemarks(" \u266A\u266B"), "");
  EXPECT_EQ(withoutRemarks(" \u266A la la la \u266A"), " la la la");
  EXPECT_EQ(withoutRemarks("\uFF08\u97F3\u697D\uFF09"), "");
  EXPECT_EQ(withoutRemarks(" Good morning. [Music] How are you?"), " Good morning. How are you?");
  EXPECT_EQ(withoutRemarks(" ..."), "");
}

TEST(WithoutRemarksTest, ALongTextIsNoProblem) {
  const std::string words(1'000'000, 'a');
  EXPECT_EQ(withoutRemarks("[" + words), "[" + words);
  EXPECT_EQ(withoutRemarks(words + "[" + words + "]"), words);
  EXPECT_EQ(withoutRemarks("(" + words + ")"), "");
  EXPECT_EQ(withoutRemarks("*" + words), "*" + words);
}

TEST(WithoutRemarksTest, WordsStay) {
  EXPECT_EQ(withoutRemarks(" It costs (about) ten."), " It costs (about) ten.");
  EXPECT_EQ(withoutRemarks(" \u00DC."), " \u00DC.");
  EXPECT_EQ(withoutRemarks(" 7"), " 7");
  EXPECT_EQ(withoutRemarks(" two * three"), " two * three");
  EXPECT_EQ(withoutRemarks(""), "");
}

}  // namespace
}  // namespace voxtrel::quillback
