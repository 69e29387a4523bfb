#include <gtest/gtest.h>

#include "quillback/text/Typeable.h"

namespace voxtrel::quillback {
namespace {

TEST(TypeableTest, ATextHasNoControlCharacters) {
  EXPECT_EQ(typeable("a\vb\tc\rd\x1b\x7f\xC2\x85\xE2\x80\xA8"
                     "e"),
            U"a b c d  e");
}

TEST(TypeableTest, ABlankGoesBetweenTextsUnlessOneJoinsTheOther) {
  for (const char* text : {"two", "(two)", ".NET", "!important", "...and", "-", "é"}) {
    EXPECT_EQ(separatorBetween("one", text), " ") << text;
    EXPECT_EQ(separatorBetween("one.", text), " ") << text;
    EXPECT_EQ(separatorBetween("one\n", text), "") << text;
    EXPECT_EQ(separatorBetween("", text), "") << text;
  }
  for (const char* text : {"", "\ntwo", " two", ".", "?!", ", two", ".\ntwo", ") two"}) {
    EXPECT_EQ(separatorBetween("one", text), "") << text;
  }
}

TEST(TypeableTest, InvalidUtf8IsLeftOut) {
  EXPECT_EQ(typeable("a\xFF\xC3(\xE4\xBD"), U"a(");
  EXPECT_EQ(typeable("\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80"), U"");
  EXPECT_EQ(typeable("é你😀"), U"é你😀");
}

TEST(TypeableTest, AfterTypedLeavesTheBytesBehindTheTypedCharacters) {
  const std::string text = "a\n\x01\xFFГ\tb";
  EXPECT_EQ(typeable(text).size(), 5u);
  EXPECT_EQ(afterTyped(text, 0), text);
  EXPECT_EQ(afterTyped(text, 1), "\n\x01\xFFГ\tb");
  EXPECT_EQ(afterTyped(text, 2), "\x01\xFFГ\tb");
  EXPECT_EQ(afterTyped(text, 3), "\tb");
  EXPECT_EQ(afterTyped(text, 5), "");
  EXPECT_EQ(afterTyped(text, 9), "");
}

}  // namespace
}  // namespace voxtrel::quillback
