#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "quillback/recognition/whisper/WeightsFile.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using Family = RecogniserOptions::Family;

/// The text of a file with true sizes and next to nothing in it.
class SmallWeights {
 public:
  SmallWeights& numbers(const std::vector<std::int32_t>& values) {
    for (const std::int32_t value : values) {
      for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes_ += static_cast<char>(static_cast<std::uint32_t>(value) >> shift & 0xFFU);
      }
    }
    return *this;
  }
  SmallWeights& text(const std::string& value) {
    bytes_ += value;
    return *this;
  }
  SmallWeights& vocabulary() { return numbers({2, 3}).text("the").numbers({2}).text("of"); }
  /// Two times three numbers of four bytes.
  SmallWeights& tensor() {
    return numbers({2, 4, 0, 2, 3}).text("bias").numbers({1, 2, 3, 4, 5, 6});
  }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

const std::vector<std::int32_t> kWhisperSizes = {0x67676d6c, 51'865, 1500, 512, 8,  6,
                                                 448,        512,    8,    6,   80, 1};

SmallWeights whisperHeader(std::vector<std::int32_t> sizes = kWhisperSizes) {
  return SmallWeights().numbers(sizes).numbers({1, 2, 0, 0});
}

std::string whisperFile() {
  return whisperHeader().vocabulary().tensor().tensor().bytes();
}

std::string parakeetFile(const std::vector<std::int32_t>& durations = {0, 1, 2, 3, 4}) {
  return SmallWeights()
      .numbers({0x67676d6c, 8192, 5000, 1024, 8, 24, 128, 1, 512, 8, 256, 9, 640, 2, 5, 10})
      .numbers({1, 1, 0})
      .numbers({1, 0})
      .numbers(durations)
      .vocabulary()
      .tensor()
      .bytes();
}

struct WeightsFileTest : testing::Test {
  std::string problem(const std::string& bytes, Family family = Family::whisper) {
    const std::string path = folder.path() / "weights.bin";
    std::ofstream(path, std::ios::binary) << bytes;
    const auto checked = checkWeights(path, family);
    return checked ? "" : checked.error();
  }

  ScratchFolder folder;
};

TEST_F(WeightsFileTest, WholeFilesOfBothFamiliesAreAccepted) {
  EXPECT_EQ(problem(whisperFile()), "");
  EXPECT_EQ(problem(parakeetFile(), Family::parakeet), "");
}

TEST_F(WeightsFileTest, AFileCutAtAnyByteIsRefused) {
  for (const auto& [whole, family] :
       {std::pair(whisperFile(), Family::whisper), std::pair(parakeetFile(), Family::parakeet)}) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
      // Cut between two tensors it is whole as far as its form tells: the library counts them.
      if (family == Family::whisper && length == whole.size() - 48) continue;
      EXPECT_NE(problem(whole.substr(0, length), family), "") << length;
    }
  }
}

TEST_F(WeightsFileTest, TheProblemIsNamed) {
  EXPECT_EQ(problem(""), "this is no file of weights");
  EXPECT_EQ(problem("<html>no</html>"), "this is no file of weights");
  EXPECT_EQ(problem(parakeetFile()), "this is no model of Whisper");
  EXPECT_EQ(problem(whisperFile(), Family::parakeet), "this is no model of Parakeet");
  EXPECT_EQ(problem(whisperHeader().bytes()), "the file ends within its vocabulary");
  EXPECT_EQ(problem(whisperHeader().vocabulary().bytes()), "the file ends before its weights");
  EXPECT_EQ(checkWeights(folder.path() / "missing", Family::whisper).error(),
            "the file cannot be read");
}

TEST_F(WeightsFileTest, ImpossibleSizesAreRefused) {
  for (std::size_t at = 1; at < kWhisperSizes.size(); ++at) {
    for (const std::int32_t value : {-1, 2'000'000'000}) {
      auto sizes = kWhisperSizes;
      sizes[at] = value;
      EXPECT_NE(problem(whisperHeader(sizes).vocabulary().tensor().bytes()), "") << at << value;
    }
  }
  auto unequal = kWhisperSizes;
  unequal[7] = 768;
  EXPECT_EQ(problem(whisperHeader(unequal).vocabulary().tensor().bytes()),
            "the encoder and the decoder do not fit each other");
}

TEST_F(WeightsFileTest, VocabulariesThatWhisperNeverHadAreRefused) {
  for (const auto& [tokens, isTrue] : {std::pair(51'863, false), std::pair(51'864, true),
                                       std::pair(51'866, true), std::pair(51'867, false)}) {
    auto sizes = kWhisperSizes;
    sizes[1] = tokens;
    EXPECT_EQ(problem(whisperHeader(sizes).vocabulary().tensor().bytes()).empty(), isTrue)
        << tokens;
  }
}

TEST_F(WeightsFileTest, DurationsThatWouldNeverEndAreRefused) {
  // A token's duration moves the decoder forward; backwards it would run for ever.
  for (const std::int32_t duration : {-1, -2'000'000'000, 1000}) {
    EXPECT_EQ(problem(parakeetFile({0, 1, 2, 3, duration}), Family::parakeet),
              "its durations are damaged");
  }
}

TEST_F(WeightsFileTest, DamagedTensorsAreRefused) {
  const std::string start = whisperHeader().vocabulary().bytes();
  const std::vector<std::vector<std::int32_t>> damaged = {
      {0, 4, 0},
      {9, 4, 0},
      {1, -1, 0, 1},
      {1, 0, 99'999, 1},
      {1, 0, -1, 1},
      {1, 0, 0, -5},
      {4, 0, 0, 2'000'000'000, 2'000'000'000, 2'000'000'000, 2'000'000'000}};
  for (const auto& numbers : damaged) {
    EXPECT_NE(problem(start + SmallWeights().numbers(numbers).bytes()), "");
  }
}

}  // namespace
}  // namespace voxtrel::quillback
