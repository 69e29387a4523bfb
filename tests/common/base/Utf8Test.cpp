#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

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
    // The byte after the cut would complete the character.
    EXPECT_FALSE(isValidUtf8(std::string_view(text).substr(0, before + 3))) << before;
  }
}

TEST(Utf8, DecodesTheCharacterAtTheStart) {
  const auto decoded = [](std::string_view text) {
    const Utf8Character first = firstCharacter(text);
    return std::pair(first.code, first.length);
  };
  EXPECT_EQ(decoded("ab"), std::pair(U'a', std::size_t{1}));
  EXPECT_EQ(decoded("\0x"s), std::pair(U'\0', std::size_t{1}));
  EXPECT_EQ(decoded("\u00FCb"), std::pair(U'\u00FC', std::size_t{2}));
  EXPECT_EQ(decoded("\u4F60b"), std::pair(U'\u4F60', std::size_t{3}));
  EXPECT_EQ(decoded("\U0001F600b"), std::pair(U'\U0001F600', std::size_t{4}));
  for (const char* malformed : {"\x80", "\xC3", "\xE0\x80\x80", "\xED\xA0\x80", "\xFF"}) {
    EXPECT_EQ(decoded(malformed), std::pair(U'\0', std::size_t{0}));
  }
}

TEST(Utf8, KnowsScriptsWithoutBlanks) {
  using namespace std::string_view_literals;
  for (const char32_t c : U"\u4F60\u306F\u30CF\u3005\u0E01\u0EA5\u1000\u1780\U00020000"sv) {
    EXPECT_TRUE(isUnspacedScript(c)) << static_cast<unsigned>(c);
  }
  for (const char32_t c : U"a \u00E9\u0416\uAC00\u3002\u0627\U0001F600"sv) {
    EXPECT_FALSE(isUnspacedScript(c)) << static_cast<unsigned>(c);
  }
}

TEST(Utf8, CutsAPrefixBetweenCharacters) {
  EXPECT_EQ(utf8Prefix("\u4F60\u4F60", 6), "\u4F60\u4F60");
  for (const std::size_t maxBytes : {3U, 4U, 5U}) {
    EXPECT_EQ(utf8Prefix("\u4F60\u4F60", maxBytes), "\u4F60") << maxBytes;
  }
  EXPECT_EQ(utf8Prefix("\u4F60", 2), "");
  EXPECT_EQ(utf8Prefix("abc", 2), "ab");
}

}  // namespace
}  // namespace voxtrel
