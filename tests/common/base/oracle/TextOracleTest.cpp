#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include <string>
#include <vector>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"
#include "support/ConfigWords.h"
#include "support/EngineWords.h"
#include "support/IcuText.h"
#include "support/RandomText.h"

namespace voxtrel {
namespace {

constexpr UChar32 kFirstSurrogate = 0xD800;
constexpr UChar32 kLastSurrogate = 0xDFFF;

template <typename Take>
void forEachCharacter(Take take) {
  for (UChar32 character = 0; character <= UCHAR_MAX_VALUE; ++character) {
    if (character == kFirstSurrogate) character = kLastSurrogate + 1;
    take(character, utf8Of(character));
  }
}

TEST(TextBesideIcu, TrimsExactlyTheSameCharactersOfAllUnicode) {
  int blanks = 0;
  forEachCharacter([&blanks](UChar32 character, const std::string& text) {
    const bool isBlank = isWhitespace(character);
    blanks += isBlank ? 1 : 0;
    ASSERT_EQ(trimmedWhitespace(text).empty(), isBlank) << std::hex << character;
    ASSERT_EQ(trimmedLeadingWhitespace(text).empty(), isBlank) << std::hex << character;
  });
  EXPECT_EQ(blanks, 18);
}

TEST(TextBesideIcu, CutsLinesAtExactlyTheSameCharactersOfAllUnicode) {
  forEachCharacter([](UChar32 character, const std::string& text) {
    int pieces = 0;
    forEachLine(text, [&pieces](std::string_view) { ++pieces; });
    ASSERT_EQ(pieces == 2, isNewline(character)) << std::hex << character;
  });
}

/// In ICU, too, a dot matches everything but Unicode's newlines.
TEST(TextBesideIcu, HasADotThatMatchesEverythingInALine) {
  IcuPattern dot(".");
  forEachCharacter([&dot](UChar32 character, const std::string&) {
    ASSERT_EQ(dot.matches(icu::UnicodeString(character)), !isNewline(character)) << character;
  });
}

TEST(TextBesideIcu, SplitsAndTrimsTheSameRandomTexts) {
  RandomText random(11);
  for (int round = 0; round < 5000; ++round) {
    const std::string text = random.ofWords(
        round % 2 == 0 ? std::span<const std::string_view>(kConfigWords) : kEngineWords, 30);
    std::vector<std::string> expected;
    for (const icu::UnicodeString& line : linesOf(wide(text))) {
      expected.push_back(narrow(trimmed(line)));
    }
    std::vector<std::string> pieces;
    forEachLine(text, [&](std::string_view line) { pieces.emplace_back(trimmedWhitespace(line)); });
    ASSERT_EQ(pieces, expected) << testing::PrintToString(text);
  }
}

bool isValidForIcu(const std::string& bytes) {
  std::vector<UChar> buffer(bytes.size() + 1);
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8(buffer.data(), static_cast<std::int32_t>(buffer.size()), nullptr, bytes.data(),
                static_cast<std::int32_t>(bytes.size()), &status);
  return status == U_ZERO_ERROR;
}

TEST(TextBesideIcu, DecodesEveryCharacterOfAllUnicode) {
  forEachCharacter([](UChar32 character, const std::string& text) {
    const Utf8Character first = firstCharacter(text + "\xBF");
    ASSERT_EQ(first.code, static_cast<char32_t>(character));
    ASSERT_EQ(first.length, text.size()) << std::hex << character;
  });
}

TEST(TextBesideIcu, CallsTheSameBytesUtf8) {
  for (unsigned int bytes = 0; bytes < 0x10000; ++bytes) {
    const std::string pair = {static_cast<char>(bytes >> 8), static_cast<char>(bytes & 0xFF)};
    ASSERT_EQ(isValidUtf8(pair), isValidForIcu(pair)) << std::hex << bytes;
    for (const char* tail : {"\x80", "\xBF", "\x80\x80", "\xBF\xBF", "\x80x"}) {
      ASSERT_EQ(isValidUtf8(pair + tail), isValidForIcu(pair + tail)) << std::hex << bytes;
    }
  }
}

TEST(TextBesideIcu, CallsTheSameDamagedTextsUtf8) {
  RandomText random(12);
  int valid = 0;
  for (int round = 0; round < 20'000; ++round) {
    const std::string text = random.damaged(random.ofWords(kConfigWords, 60));
    valid += isValidForIcu(text) ? 1 : 0;
    ASSERT_EQ(isValidUtf8(text), isValidForIcu(text)) << testing::PrintToString(text);
  }
  EXPECT_GT(valid, 5'000);
  EXPECT_LT(valid, 15'000);
}

}  // namespace
}  // namespace voxtrel
