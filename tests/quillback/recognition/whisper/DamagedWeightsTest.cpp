#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

#include "quillback/recognition/ThreadedRecogniser.h"
#include "quillback/recognition/process/RecogniserProcess.h"
#include "support/PostedLoop.h"
#include "support/RealSpeech.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

/// Weights with single flipped bits, loaded in the process of the engine's own program.
struct DamagedWeights : RealSpeech {
  struct Made {
    const char* name;
    const char* family;
  };

  void damage(const Made& made) {
    family_ = made.family;
    path_ = folder_.path() / "damaged.bin";
    std::filesystem::copy_file(std::string(MADE_WEIGHTS) + "/" + made.name, path_,
                               std::filesystem::copy_options::overwrite_existing);
    size_ = std::filesystem::file_size(path_);
  }

  /// Called again, it mends the file.
  void flip(std::uintmax_t bit) {
    std::fstream file(path_, std::ios::binary | std::ios::in | std::ios::out);
    file.seekg(static_cast<std::streamoff>(bit / 8));
    const int byte = file.get();
    file.seekp(static_cast<std::streamoff>(bit / 8));
    file.put(static_cast<char>(byte ^ (1 << (bit % 8))));
    ASSERT_TRUE(file.good());
  }

  /// Whether the weights can be used; if not, one line must say why. Used ones must give an answer.
  bool isUsable(bool isHeard) {
    RecogniserProcess process({QUILLBACK, "recognise", "file", family_, path_}, nullptr, limits());
    const LoadReport report = process.load();
    if (report.isUsable) {
      if (isHeard) recognise(process, speech_);
      return true;
    }
    EXPECT_THAT(report.lines, SizeIs(1));
    if (report.lines.empty()) return false;
    EXPECT_THAT(report.lines[0], StartsWith("[quillback] ERROR The recogniser "));
    EXPECT_THAT(report.lines[0], AnyOf(HasSubstr("cannot load its model: "), HasSubstr("ended ")));
    return false;
  }

  /// Each place gets its own child.
  void tryPlaces(int count, std::uintmax_t firstByte, std::uintmax_t lastByte) {
    std::mt19937_64 generator(14);
    std::uniform_int_distribution<std::uintmax_t> places(firstByte * 8, lastByte * 8 - 1);
    for (int at = 0; at < count; ++at) {
      const std::uintmax_t bit = places(generator);
      SCOPED_TRACE(std::string(family_) + ", bit " + std::to_string(bit));
      flip(bit);
      const auto start = std::chrono::steady_clock::now();
      isUsable(at % kHeardEvery == 0) ? ++used_ : ++refused_;
      EXPECT_LT(std::chrono::steady_clock::now() - start, limits().load);
      flip(bit);
    }
  }

  static RecogniserLimits limits() {
    RecogniserLimits limits;
    limits.load = std::chrono::seconds(20);
    return limits;
  }

  static constexpr int kHeardEvery = 10;
  const ScratchFolder folder_;
  const Samples speech_ = folder().empty() ? Samples() : recording("en_rear_left").samples;
  std::string path_;
  const char* family_ = "";
  std::uintmax_t size_ = 0;
  int used_ = 0;
  int refused_ = 0;
};

constexpr DamagedWeights::Made kWhisperWeights{"script.bin", "whisper"};
constexpr DamagedWeights::Made kParakeetWeights{"parakeet.bin", "parakeet"};
constexpr std::uintmax_t kHeaderBytes = 48;

TEST_F(DamagedWeights, ABitInWhispersHeader) {
  damage(kWhisperWeights);
  tryPlaces(60, 0, kHeaderBytes);
  EXPECT_GT(refused_, used_);
  EXPECT_TRUE(isUsable(true)) << "the file was not mended";
}

TEST_F(DamagedWeights, ABitInWhispersVocabulary) {
  damage(kWhisperWeights);
  constexpr std::uintmax_t kVocabularyBytes = 700'000;
  tryPlaces(60, kHeaderBytes, kVocabularyBytes);
  EXPECT_GT(refused_, 0);
  EXPECT_GT(used_, 0);
}

TEST_F(DamagedWeights, ABitInWhispersTensors) {
  damage(kWhisperWeights);
  tryPlaces(60, size_ / 100, size_);
  EXPECT_GT(used_, refused_);
}

TEST_F(DamagedWeights, ABitInParakeetsHeaderAndTables) {
  damage(kParakeetWeights);
  constexpr std::uintmax_t kHeader = 64;
  tryPlaces(30, 0, kHeader);
  EXPECT_GT(refused_, used_);
  constexpr std::uintmax_t kTables = 360'000;
  tryPlaces(10, kHeader, kTables);
}

/// Stands for the embedded recogniser.
struct Fallback final : RecogniserBackend {
  LoadReport load() override { return {true, {}}; }
  void begin(const std::atomic<bool>& /*isDropped*/) override {}
  void feed(std::span<const std::int16_t> samples) override { count_ += samples.size(); }
  Transcription finish() override { return {std::to_string(count_) + " samples"}; }
  std::size_t count_ = 0;
};

TEST_F(DamagedWeights, WeightsThatVanishWhileTheEngineRuns) {
  damage(kWhisperWeights);
  RecogniserProcess process({QUILLBACK, "recognise", "file", family_, path_},
                            [] { return std::make_unique<Fallback>(); });
  ASSERT_TRUE(process.load().isUsable);
  std::filesystem::remove(path_);
  EXPECT_THAT(recognise(process, speech_).text, HasSubstr("Guten Tag"));
  process.rest();  // the next take needs the file again
  const Transcription result = recognise(process, speech_);
  EXPECT_EQ(result.text, std::to_string(speech_.size()) + " samples");
  ASSERT_THAT(result.lines, SizeIs(1));
  EXPECT_THAT(result.lines[0], HasSubstr("the file cannot be read"));
}

TEST_F(DamagedWeights, EightTakesOneAfterTheOtherGiveTheirWordsInOrder) {
  const std::vector<std::string> names = {"en_jfk",          "en_goforward",        "en_rear_left",
                                          "en_front_center", "en_brooklyn_bridge",  "en_lj001_0002",
                                          "en_arctic_a0024", "en_harvard_spk2_snt2"};
  test::PostedLoop loop;
  ThreadedRecogniser recogniser(
      loop,
      std::make_unique<RecogniserProcess>(
          std::vector<std::string>{QUILLBACK, "recognise", "file", "whisper",
                                   folder() + "/ggml-base.bin"},
          nullptr),
      [](const LoadReport& report) { EXPECT_TRUE(report.isUsable); });
  std::vector<std::string> texts;
  std::unique_ptr<Utterance> utterance;
  // The next take begins when the words of the last have come, as in a dictation.
  const std::function<void()> next = [&] {
    utterance.reset();
    utterance = recogniser.begin();
    utterance->feed(recording(names.at(texts.size())).samples);
    utterance->finish([&](const Transcription& result) {
      texts.push_back(result.text);
      if (texts.size() < names.size()) loop.post(next);
    });
  };
  next();
  ASSERT_TRUE(loop.runUntil([&] { return texts.size() == names.size(); }, std::chrono::minutes(2)));
  for (std::size_t at = 0; at < names.size(); ++at) {
    EXPECT_LE(wordErrorRate(texts[at], recording(names[at]).text), 0.34) << texts[at];
  }
}

}  // namespace
}  // namespace voxtrel::quillback
