#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
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
  void feed(std::span<const std::int16_t> samples) override {
    fedSamples += samples.size();
    largestFeed = std::max(largestFeed, samples.size());
  }
  Transcription finish() override {
    ++takes;
    return {words, {}, {}, resultLines};
  }

  bool isUsable = true;
  std::string words;
  std::vector<std::string> resultLines;
  int loads = 0;
  int takes = 0;
  std::size_t fedSamples = 0;
  std::size_t largestFeed = 0;
};

/// A backend for several files, whose model is loaded once.
struct LoadedOnce final : RecogniserBackend {
  explicit LoadedOnce(std::unique_ptr<RecogniserBackend> inner) : backend(std::move(inner)) {}
  LoadReport load() override {
    if (!report) report = backend->load();
    return *report;
  }
  void begin(const std::atomic<bool>& isDropped) override { backend->begin(isDropped); }
  void feed(std::span<const std::int16_t> samples) override { backend->feed(samples); }
  Transcription finish() override { return backend->finish(); }

  const std::unique_ptr<RecogniserBackend> backend;
  std::optional<LoadReport> report;
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
  LoadedOnce backend(makeBackend({}, voice.folder()));
  for (const char* phrase : kPhrases) {
    EXPECT_EQ(transcribeFile(voice.say(phrase), backend, text, notes), TranscribeExit::done);
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

/// The most memory that the process ever had.
long peakKilobytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST_F(TranscribeFixture, MemoryDoesNotGrowWithTheFile) {
  WordlessBackend backend;
  constexpr std::size_t kHour = std::size_t{3600} * 16'000;
  const std::string path = write(WavBytes().riff().format(1, 1, 16000, 8).data(kHour));
  std::filesystem::resize_file(path, std::filesystem::file_size(path) + kHour);
  const long before = peakKilobytes();
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::done);
  EXPECT_LT(peakKilobytes() - before, 16'000);
  EXPECT_EQ(backend.fedSamples, kHour);
  EXPECT_LE(backend.largestFeed, 16'000U * 30);
}

TEST_F(TranscribeFixture, ALongFileIsRecognisedInTakesOfFiveMinutesAtMost) {
  WordlessBackend backend;
  backend.words = " some words\n";
  backend.resultLines = {"a line about the result"};
  constexpr std::size_t kElevenMinutes = std::size_t{660} * 16'000;
  const std::string path = write(WavBytes().riff().format(1, 1, 16000, 8).data(kElevenMinutes));
  std::filesystem::resize_file(path, std::filesystem::file_size(path) + kElevenMinutes);
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::done);
  EXPECT_EQ(backend.takes, 3);
  EXPECT_THAT(text.lines, ElementsAre("some words some words some words"));
  EXPECT_THAT(notes.lines, ElementsAre("a line about the model", "a line about the result"));
}

TEST_F(TranscribeFixture, AFileOfManyHoursIsRefusedBeforeAnyModelIsLoaded) {
  WordlessBackend backend;
  constexpr std::size_t kBytes = 100'000'000;
  const std::string path = write(WavBytes().riff().format(1, 1, 1000, 8).data(kBytes));
  std::filesystem::resize_file(path, std::filesystem::file_size(path) + kBytes);
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::tooLong);
  EXPECT_THAT(notes.lines, ElementsAre("Cannot read \"" + path +
                                       "\": its sound is 28 hours long; the limit is 12 hours"));
  EXPECT_EQ(backend.loads, 0);
}

TEST_F(TranscribeFixture, APipeIsReadToItsEnd) {
  WordlessBackend backend;
  const std::string path = voice.folder() + "/pipe";
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const auto bytes =
      WavBytes().riff().format(1, 1, 16000, 16).data(0).number(0x00070007, 4).bytes();
  std::thread writer([&] {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  });
  EXPECT_EQ(transcribeFile(path, backend, text, notes), TranscribeExit::done);
  writer.join();
  EXPECT_EQ(backend.fedSamples, 2U);
  EXPECT_THAT(notes.lines, ElementsAre(HasSubstr("does not say how long"), "a line about the model",
                                       "No words were understood."));
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
