#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "quillback/recognition/WhisperSupport.h"
#include "quillback/recognition/whisper/WhisperEngine.h"
#include "support/whisper_double/WhisperDouble.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct WhisperEngineTest : testing::Test {
  test::WhisperDouble& library = test::WhisperDouble::fresh();
  std::atomic<bool> isDropped{false};

  Transcription hear(SpeechEngine& engine, const std::vector<std::int16_t>& samples) {
    engine.begin(isDropped);
    engine.hear(samples);
    return engine.finish();
  }
};

TEST_F(WhisperEngineTest, TheModelIsLoadedOnceAndGivenBack) {
  {
    WhisperEngine engine("/store/weights.bin", {}, 3);
    const LoadReport report = engine.load();
    EXPECT_TRUE(report.isUsable);
    EXPECT_THAT(report.lines, ElementsAre("Using Whisper."));
    hear(engine, {});
    hear(engine, {});
    EXPECT_THAT(library.loadedFiles, ElementsAre("/store/weights.bin"));
    EXPECT_EQ(library.contexts, 1);
  }
  EXPECT_EQ(library.contexts, 0);
}

TEST_F(WhisperEngineTest, TheLibraryIsSilencedBeforeItLoads) {
  library.loads = false;
  WhisperEngine engine("/store/weights.bin", {}, 3);
  const LoadReport report = engine.load();
  EXPECT_TRUE(library.isLogSilenced);
  EXPECT_FALSE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre(StartsWith("[quillback] ERROR ")));
}

TEST_F(WhisperEngineTest, TheSettingsReachTheLibrary) {
  WhisperEngine engine("w", {.model = "m", .language = "de", .translate = true}, 3);
  engine.load();
  hear(engine, {});
  EXPECT_EQ(library.language, "de");
  EXPECT_TRUE(library.parameters.translate);
  EXPECT_EQ(library.parameters.n_threads, 3);
}

TEST_F(WhisperEngineTest, AutoLetsTheLibraryDetectTheLanguage) {
  WhisperEngine engine("w", {}, 1);
  EXPECT_EQ(engine.load().lines.size(), 1U);
  hear(engine, {});
  EXPECT_EQ(library.language, "auto");
  EXPECT_FALSE(library.parameters.translate);
}

TEST_F(WhisperEngineTest, AnUnknownLanguageIsSaidAndDetected) {
  WhisperEngine engine("w", {.model = "m", .language = "klingon", .translate = false}, 1);
  const LoadReport report = engine.load();
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines.back(), StartsWith("[quillback] ERROR Whisper does not know"));
  hear(engine, {});
  EXPECT_EQ(library.language, "auto");
}

TEST_F(WhisperEngineTest, NothingIsPrintedAndNoUtteranceColoursTheNext) {
  WhisperEngine engine("w", {}, 1);
  engine.load();
  hear(engine, {});
  EXPECT_TRUE(library.parameters.no_context);
  EXPECT_FALSE(library.parameters.print_special || library.parameters.print_progress ||
               library.parameters.print_realtime || library.parameters.print_timestamps);
}

TEST_F(WhisperEngineTest, SamplesBecomeFractionsOfOneAndShortSpeechIsFilledUpWithSilence) {
  WhisperEngine engine("w", {}, 1);
  engine.load();
  hear(engine, {16384, -32768});
  ASSERT_EQ(library.samples.size(), 17'600U);
  EXPECT_EQ(library.samples[0], 0.5F);
  EXPECT_EQ(library.samples[1], -1.0F);
  library.samples.erase(library.samples.begin(), library.samples.begin() + 2);
  EXPECT_THAT(library.samples, Each(0.0F));
}

TEST_F(WhisperEngineTest, EachUtteranceIsHeardAlone) {
  WhisperEngine engine("w", {}, 1);
  engine.load();
  hear(engine, std::vector<std::int16_t>(20'000, 100));
  EXPECT_EQ(library.samples.size(), 20'000U);
  hear(engine, std::vector<std::int16_t>(18'000, 100));
  EXPECT_EQ(library.samples.size(), 18'000U);
}

TEST_F(WhisperEngineTest, SegmentsBecomeOneTextWithoutRemarks) {
  WhisperEngine engine("w", {}, 1);
  engine.load();
  library.segments = {" Good morning.", " [BLANK_AUDIO]", " (wind)", "  ", " How are you?"};
  EXPECT_EQ(hear(engine, {}).text, "Good morning. How are you?");
  library.segments = {"\xE6\x97\xA9", "\xE4\xB8\x8A"};
  EXPECT_EQ(hear(engine, {}).text, "\xE6\x97\xA9\xE4\xB8\x8A");
  library.segments = {};
  EXPECT_EQ(hear(engine, {}).text, "");
}

TEST_F(WhisperEngineTest, AFailureOfTheLibraryGivesNoText) {
  WhisperEngine engine("w", {}, 1);
  engine.load();
  library.segments = {" left over"};
  library.fullResult = -1;
  EXPECT_EQ(hear(engine, {}).text, "");
}

TEST_F(WhisperEngineTest, ADroppedUtteranceIsAborted) {
  WhisperEngine engine("w", {}, 1);
  engine.load();
  library.segments = {" unwanted"};
  library.encodings = 5;
  int asked = 0;
  library.whileItComputes = [&] {
    if (++asked == 2) isDropped = true;
  };
  EXPECT_EQ(hear(engine, {}).text, "");
  EXPECT_TRUE(library.wasAborted);
  EXPECT_EQ(asked, 2);
}

TEST_F(WhisperEngineTest, EncodingIsTakenFromTheLibrarysMeanPerWindow) {
  WhisperEngine engine("w", {}, 1);
  engine.load();
  library.encodeMs = 0.001F;
  library.encodings = 3;
  library.whileItComputes = [] {
    const auto end = std::chrono::steady_clock::now() + 50us;
    while (std::chrono::steady_clock::now() < end) {
    }
  };
  const Transcription result = hear(engine, {});
  EXPECT_EQ(result.encode, 3us);
  EXPECT_GE(result.decode, 147us);
  EXPECT_EQ(library.resets, 1);
}

TEST_F(WhisperEngineTest, EncodingNeverTakesLongerThanAll) {
  WhisperEngine engine("w", {}, 1);
  engine.load();
  library.encodeMs = 1e6F;
  const Transcription result = hear(engine, {});
  EXPECT_LT(result.encode, 1s);
  EXPECT_EQ(result.decode, 0us);
}

TEST_F(WhisperEngineTest, ThisBuildSaysThatWhisperIsInIt) {
  EXPECT_TRUE(isWhisperBuiltIn());
  const auto engine = makeWhisperEngine("w", {});
  engine->load();
  hear(*engine, {});
  EXPECT_GE(library.parameters.n_threads, 1);
}

}  // namespace
}  // namespace voxtrel::quillback
