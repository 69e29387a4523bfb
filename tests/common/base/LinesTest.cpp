#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/base/Lines.h"
#include "support/Blanks.h"
#include "support/EngineWords.h"
#include "support/RandomText.h"

namespace voxtrel {
namespace {

using Pieces = std::vector<std::string>;

Pieces piecesOf(std::string_view text) {
  Pieces pieces;
  forEachLine(text, [&pieces](std::string_view line) { pieces.emplace_back(line); });
  return pieces;
}

TEST(Lines, AreCutAtEveryNewlineCharacter) {
  for (const std::string_view newline : kNewlines) {
    EXPECT_EQ(piecesOf("one" + std::string(newline) + "two"), (Pieces{"one", "two"}))
        << testing::PrintToString(newline);
  }
}

TEST(Lines, KeepTheEmptyPieces) {
  EXPECT_EQ(piecesOf(""), (Pieces{""}));
  EXPECT_EQ(piecesOf("\n"), (Pieces{"", ""}));
  EXPECT_EQ(piecesOf("one\r\ntwo\n"), (Pieces{"one", "", "two", ""}));
}

TEST(Lines, AreNotCutAtBytesThatOnlyResembleANewline) {
  for (const std::string_view other :
       {"\t"sv, "\x0E"sv, "\x1C"sv, "\0"sv, "\xC2\x84"sv, "\xC3\x85"sv, "\x85"sv, "\xC2"sv,
        "\xE2\x80\xA7"sv, "\xE2\x80\xAA"sv, "\xE2\x81\xA8"sv, "\xE2\x80"sv, "\xE3\x80\xA8"sv}) {
    const std::string text = "one" + std::string(other) + "two";
    EXPECT_EQ(piecesOf(text), (Pieces{text})) << testing::PrintToString(other);
  }
}

TEST(Lines, AroundAPlaceAreThePiecesOfTheSplit) {
  RandomText random(1);
  for (int round = 0; round < 2000; ++round) {
    const std::string text = random.damaged(random.ofWords(kEngineWords, 8));
    forEachLine(text, [&text](std::string_view line) {
      for (std::size_t i = 0; i < line.size(); ++i) {
        const auto position = static_cast<std::size_t>(line.data() - text.data()) + i;
        const std::string_view found = lineAround(text, position);
        ASSERT_EQ(found.data(), line.data()) << testing::PrintToString(text);
        ASSERT_EQ(found.size(), line.size()) << testing::PrintToString(text);
      }
    });
  }
}

TEST(Whitespace, IsTrimmedAtBothEndsAndKeptInside) {
  for (const std::string_view blank : kWhitespace) {
    const std::string ends = std::string(blank) + " " + std::string(blank);
    const std::string inside = "a" + std::string(blank) + "b";
    EXPECT_EQ(trimmedWhitespace(ends + inside + ends), inside);
    EXPECT_EQ(trimmedLeadingWhitespace(ends + inside + ends), inside + ends);
    EXPECT_EQ(trimmedWhitespace(ends), "");
    EXPECT_EQ(trimmedLeadingWhitespace(ends), "");
  }
}

TEST(Whitespace, IsNeitherANewlineNorWhatOnlyLooksEmpty) {
  std::vector<std::string_view> others(kNewlines.begin(), kNewlines.end());
  // Mongolian vowel separator, zero-width space, byte-order mark, separators of ASCII, NUL.
  for (const auto other : {"\xE1\xA0\x8E"sv, "\xE2\x80\x8B"sv, "\xEF\xBB\xBF"sv, "\x1C"sv, "\x1F"sv,
                           "\0"sv, "\xE2\x80"sv, "\xA0"sv}) {
    others.push_back(other);
  }
  for (const std::string_view other : others) {
    EXPECT_EQ(trimmedWhitespace(other), other) << testing::PrintToString(other);
  }
}

TEST(OneLine, LeavesTextAlone) {
  for (const std::string text : {"", "a",
                                 "Gr\xC3\xBC\xC3\x9F"
                                 "e",
                                 "\xE4\xBD\xA0", "\xF0\x9F\x98\x80", " \" \\ "}) {
    EXPECT_EQ(oneLine(text), text);
  }
}

TEST(OneLine, MakesABlankOfEveryKindOfNewline) {
  EXPECT_EQ(oneLine("a\nb\rc\vd\fe"), "a b c d e");
  EXPECT_EQ(oneLine("a\xC2\x85"
                    "b\xE2\x80\xA8"
                    "c\xE2\x80\xA9"
                    "d"),
            "a b c d");
  EXPECT_EQ(oneLine(std::string("a\0b\tc\x7F", 6)), "a b c ");
}

TEST(OneLine, ReplacesWhatIsNoUtf8ByteByByte) {
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_EQ(oneLine("a\xFF"
                    "b"),
            "a" + mark + "b");
  EXPECT_EQ(oneLine("\xC3"), mark);
  EXPECT_EQ(oneLine("\xE4\xBD"), mark + mark);
  EXPECT_EQ(oneLine("\xC0\x8A"), mark + mark);             // a line feed in two bytes
  EXPECT_EQ(oneLine("\xE0\x80\x8A"), mark + mark + mark);  // and in three
  EXPECT_EQ(oneLine("\xED\xA0\x80"), mark + mark + mark);  // half of a surrogate pair
  EXPECT_EQ(oneLine("\xF4\x90\x80\x80"), mark + mark + mark + mark);
  EXPECT_EQ(oneLine("\xF0\x9F\x98"
                    "a"),
            mark + mark + mark + "a");
}

TEST(OneLine, TrimsItsEnds) {
  EXPECT_EQ(trimmedOneLine("\n a b \n"), "a b");
  EXPECT_EQ(trimmedOneLine(" \r\n "), "");
  EXPECT_EQ(trimmedOneLine(""), "");
}

}  // namespace
}  // namespace voxtrel
