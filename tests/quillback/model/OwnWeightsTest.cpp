#include <gtest/gtest.h>

#include <string>

#include "quillback/model/OwnWeights.h"

namespace voxtrel::quillback {
namespace {

/// The first bytes of weights with that many words in their vocabulary.
std::string head(std::uint32_t words) {
  std::string bytes = "lmgg";
  for (int i = 0; i < 4; ++i, words >>= 8U) bytes += static_cast<char>(words & 0xffU);
  return bytes;
}

TEST(OwnWeightsTest, TheFamilyIsKnownByTheVocabulary) {
  for (const std::uint32_t words : {51'864U, 51'865U, 51'866U}) {
    EXPECT_EQ(familyOfWeights(head(words)), ModelFamily::whisper) << words;
  }
  for (const std::uint32_t words : {1024U, 8192U}) {
    EXPECT_EQ(familyOfWeights(head(words)), ModelFamily::parakeet) << words;
  }
  EXPECT_EQ(familyOfWeights(head(51'865) + "more"), ModelFamily::whisper);
}

TEST(OwnWeightsTest, OtherFilesAreRefused) {
  for (const std::string& wrong : {std::string(), std::string("lmgg"), std::string("ggml1234"),
                                   std::string("GGUF1234"), std::string(8, '\0')}) {
    EXPECT_EQ(familyOfWeights(wrong).error(), "it holds no weights in the ggml format");
  }
  for (const std::uint32_t words : {0U, 10U, 51'867U, 0xffff'ffffU}) {
    EXPECT_EQ(familyOfWeights(head(words)).error(),
              "it holds weights, but not of a speech recogniser")
        << words;
  }
}

}  // namespace
}  // namespace voxtrel::quillback
