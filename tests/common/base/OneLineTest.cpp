#include <gtest/gtest.h>

#include "common/base/OneLine.h"

namespace voxtrel::quillback {
namespace {

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
  EXPECT_EQ(trimmedLine("\n a b \n"), "a b");
  EXPECT_EQ(trimmedLine(" \r\n "), "");
  EXPECT_EQ(trimmedLine(""), "");
}

}  // namespace
}  // namespace voxtrel::quillback
