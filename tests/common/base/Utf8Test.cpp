#include <gtest/gtest.h>

#include <string>

#include "common/base/Utf8.h"

namespace voxtrel {
namespace {

using std::string_literals::operator""s;

TEST(Utf8, AcceptsTheFirstAndTheLastCharacterOfEachLength) {
  for (const std::string& character :
       {""s, "\0"s, "\x7F"s, "\xC2\x80"s, "\xDF\xBF"s, "\xE0\xA0\x80"s, "\xEC\xBF\xBF"s,
        "\xED\x9F\xBF"s, "\xEE\x80\x80"s, "\xEF\xBF\xBF"s, "\xF0\x90\x80\x80"s, "\xF3\xBF\xBF\xBF"s,
        "\xF4\x8F\xBF\xBF"s}) {
    EXPECT_TRUE(isValidUtf8(character)) << testing::PrintToString(character);
  }
}

TEST(Utf8, RefusesOverlongFormsSurrogatesAndWhatIsPastTheLastCharacter) {
  for (const std::string& bytes :
       {"\xC0\x80"s, "\xC1\xBF"s, "\xE0\x80\x80"s, "\xE0\x9F\xBF"s, "\xF0\x80\x80\x80"s,
        "\xF0\x8F\xBF\xBF"s, "\xED\xA0\x80"s, "\xED\xBF\xBF"s, "\xF4\x90\x80\x80"s,
        "\xF5\x80\x80\x80"s, "\xFE"s, "\xFF"s}) {
    EXPECT_FALSE(isValidUtf8(bytes)) << testing::PrintToString(bytes);
  }
}

TEST(Utf8, RefusesCharactersThatAreCutOrBroken) {
  for (const std::string& bytes : {"\x80"s, "\xBF"s, "\xC3"s, "\xC3x"s, "\xE2\x80"s, "\xE2\x80x"s,
                                   "\xE2x\x80"s, "\xF0\x9F\x98"s, "\xF0\x9F\x98x"s}) {
    EXPECT_FALSE(isValidUtf8(bytes)) << testing::PrintToString(bytes);
  }
}

TEST(Utf8, FindsOneBadByteWhereverItIsInALongText) {
  for (std::size_t size : {1U, 63U, 64U, 65U, 200U}) {
    for (std::size_t place = 0; place < size; ++place) {
      std::string text(size, 'a');
      EXPECT_TRUE(isValidUtf8(text));
      text[place] = '\xFF';
      EXPECT_FALSE(isValidUtf8(text)) << place << " of " << size;
    }
  }
}

TEST(Utf8, AcceptsACharacterAcrossTheEdgeOfABlock) {
  for (std::size_t before = 0; before < 130; ++before) {
    const std::string text = std::string(before, 'a') + "\xF0\x9F\x98\x80" + std::string(70, 'b');
    EXPECT_TRUE(isValidUtf8(text)) << before;
    // What follows the cut would complete the character.
    EXPECT_FALSE(isValidUtf8(std::string_view(text).substr(0, before + 3))) << before;
  }
}

}  // namespace
}  // namespace voxtrel
