#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "quillback/app/ChosenBackend.h"
#include "quillback/app/Transcribe.h"
#include "support/SpeechTest.h"
#include "support/Voice.h"
#include "support/WavBytes.h"

namespace voxtrel::quillback {
namespace {

using test::kPhrases;
using test::Lines;
using test::Voice;
using test::WavBytes;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Counts how often it is loaded; recognises no words.
struct WordlessBackend final : RecogniserBackend {
  LoadReport load() override {
    ++loads;
    return {isUsable, {"a line about the model"}};
  }
  void begin(const std::atomic<bool>& /*isDropped*/) override {}
  void feed(std::span<const std::int16_t> samples) override { fedSamples += samples.size(); }
  Transcription finish() override { return {"", {}, {}, resultLines}; }

  bool isUsable = true;
  std::vector<std::string> resultLines;
  int loads = 0;
  std::size_t fedSamples = 0;
};

struct TranscribeFixture : testing::Test {
  Lines text;
  Lines notes;
  Voice voice;

  std::string write(const WavBytes& file) const {
    const std::string path = voice.folder() + "/written.wav";
    const auto bytes = file.bytes();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path;
  }
};

TEST_F(TranscribeFixture, TheNinePhrasesAreRecognisedWordForWord) {
  for (const char* phrase : kPhrases) {
    const auto backend = makeBackend({}, voice.folder());
    EXPECT_EQ(transcribeFile(voice.say(phrase), *backend, text, notes), TranscribeExit::done);
    EXPECT_EQ(text.lines.back(), phrase);
  }
  // A build with Whisper says why it does not use it.
  EXPECT_THAT(notes.lines, testing::Each(testing::HasSubstr("embedded English recogniser")));
}

TEST_F(TranscribeFixture, AMissingFileIsReportedBeforeAnyModelIsLoaded) {
  WordlessBackend backend;
  EXPECT_EQ(transcribeFile("/nowhere.wav", backend, text, notes), TranscribeExit::unreadable);
  EXPECT_THAT(notes.lines, ElementsAre("Cannot read \"/nowhere.wav\": No such file or directory"));
  EXPECT_EQ(backend.loads, 0);
  EXPECT_THAT(text.lines, IsEmpty());
}

TEST_F(TranscribeFixture, AFileThatIsNotWavIsReported) {
  WordlessBackend backend;
  const std::string path = write(WavBytes().text("not a sound at all"));
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::notWav);
  EXPECT_THAT(notes.lines, ElementsAre(HasSubstr("it is not a WAV file")));
}

TEST_F(TranscribeFixture, AFileWithoutSamplesIsReported) {
  WordlessBackend backend;
  const std::string path = write(WavBytes().riff().format(1, 1, 44100, 16).data(0));
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::empty);
  EXPECT_THAT(notes.lines, ElementsAre(HasSubstr("holds no sound")));
  EXPECT_EQ(backend.loads, 0);
}

TEST_F(TranscribeFixture, ATruncatedFileIsUsedWithANote) {
  WordlessBackend backend;
  const std::string path = write(WavBytes().riff().format(1, 1, 16000, 16).data(9).number(7, 2));
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::done);
  EXPECT_EQ(backend.fedSamples, 1U);
  EXPECT_THAT(notes.lines, ElementsAre(HasSubstr("cut short"), "a line about the model",
                                       "No words were understood."));
  EXPECT_THAT(text.lines, IsEmpty());
}

TEST_F(TranscribeFixture, TheLinesOfTheResultAreNotes) {
  WordlessBackend backend;
  backend.resultLines = {"a line about the result"};
  const std::string path = write(WavBytes().riff().format(1, 1, 16000, 16).data(2).number(7, 2));
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::done);
  EXPECT_THAT(notes.lines, ElementsAre("a line about the model", "a line about the result",
                                       "No words were understood."));
}

TEST_F(TranscribeFixture, WithoutAModelItPrintsTheLineOfTheReport) {
  WordlessBackend backend;
  backend.isUsable = false;
  const std::string path = write(WavBytes().riff().format(1, 1, 16000, 16).data(2).number(7, 2));
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::noRecogniser);
  EXPECT_THAT(notes.lines, ElementsAre("a line about the model"));
}

}  // namespace
}  // namespace voxtrel::quillback
