#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "quillback/app/Transcribe.h"
#include "support/FakeEnginePorts.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Says how many samples it was fed; nothing for a single one.
struct CountingBackend final : RecogniserBackend {
  LoadReport load() override {
    ++loads;
    return {isUsable, {"a line about the model"}};
  }
  void begin(const std::atomic<bool>& /*isDropped*/) override { fed = 0; }
  void feed(std::span<const std::int16_t> samples) override { fed += samples.size(); }
  Transcription finish() override {
    return {fed == 1 ? "" : "\u200B" + std::to_string(fed) + " samples\n", {}, {}};
  }

  bool isUsable = true;
  int loads = 0;
  std::size_t fed = 0;
};

struct RetryTest : testing::Test {
  void keep(std::size_t samples) {
    ASSERT_TRUE(store.keep(std::vector<std::int16_t>(samples, 100)));
  }
  TranscribeExit retry() {
    return retryTakes(
        store.takes(), backend,
        [this](const std::string& words) {
          said.push_back(words);
          return canWrite;
        },
        notes);
  }
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const StoredTake& take : store.takes()) {
      found.push_back(fs::path(take.path).filename().string());
    }
    return found;
  }

  ScratchFolder scratch;
  TakeFolder store{(scratch.path() / "quillback").string()};
  CountingBackend backend;
  test::FakeOutput notes;
  std::vector<std::string> said;
  bool canWrite = true;
};

TEST_F(RetryTest, TheWordsOfAllKeptRecordingsComeInTheirOrder) {
  keep(20);
  keep(30);
  EXPECT_EQ(retry(), TranscribeExit::done);
  EXPECT_THAT(said, ElementsAre("20 samples", "30 samples"));
  EXPECT_THAT(notes.lines, ElementsAre("a line about the model"));
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(backend.loads, 1);
}

TEST_F(RetryTest, WithoutRecordingsNoModelIsLoaded) {
  EXPECT_EQ(retry(), TranscribeExit::empty);
  EXPECT_THAT(notes.lines, ElementsAre("There is nothing to retry."));
  EXPECT_EQ(backend.loads, 0);
}

TEST_F(RetryTest, WithoutAModelTheRecordingsStay) {
  backend.isUsable = false;
  keep(20);
  EXPECT_EQ(retry(), TranscribeExit::noRecogniser);
  EXPECT_THAT(names(), ElementsAre("take-1.wav"));
}

TEST_F(RetryTest, ARecordingWithoutWordsStaysUntilTheNext) {
  keep(1);
  keep(20);
  EXPECT_EQ(retry(), TranscribeExit::done);
  EXPECT_THAT(said, ElementsAre("20 samples"));
  EXPECT_EQ(notes.lines.back(), "No words were understood.");
  EXPECT_THAT(names(), ElementsAre("take-1-no-words.wav"));
  EXPECT_EQ(retry(), TranscribeExit::done);
  EXPECT_THAT(names(), ElementsAre("take-1-no-words.wav"));
  keep(20);
  EXPECT_THAT(names(), ElementsAre("take-3.wav"));
}

TEST_F(RetryTest, WordsThatCouldNotBeWrittenKeepTheirRecording) {
  keep(20);
  keep(30);
  canWrite = false;
  EXPECT_EQ(retry(), TranscribeExit::unwritten);
  EXPECT_THAT(said, ElementsAre("20 samples"));
  EXPECT_THAT(names(), ElementsAre("take-1.wav", "take-2.wav"));
}

TEST_F(RetryTest, AFileWithoutSoundIsReportedAndRemoved) {
  scratch.write("quillback/take-1.wav", "");
  keep(20);
  keep(0);
  EXPECT_EQ(retry(), TranscribeExit::notWav);
  EXPECT_THAT(said, ElementsAre("20 samples"));
  EXPECT_THAT(notes.lines, ElementsAre("a line about the model", HasSubstr("not a WAV file"),
                                       HasSubstr("holds no sound")));
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(RetryTest, AFileThatWasCutByACrashGivesWhatItHas) {
  keep(20);
  fs::resize_file(store.takes()[0].path, 44 + 2 * 10);
  EXPECT_EQ(retry(), TranscribeExit::done);
  EXPECT_THAT(said, ElementsAre("10 samples"));
}

TEST_F(RetryTest, AFileThatCannotBeReadStays) {
  keep(20);
  fs::remove(store.takes()[0].path);
  fs::create_directory(scratch.path() / "quillback" / "take-1.wav");
  EXPECT_EQ(retry(), TranscribeExit::unreadable);
  EXPECT_THAT(names(), ElementsAre("take-1.wav"));
}

}  // namespace
}  // namespace voxtrel::quillback
