#include <gmock/gmock.h>

#include "quillback/insertion/x11/TypingPlan.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

KeyTable smallTable() {
  return {
      .strokes = {{U'a', {38, false, false}}, {U'A', {38, true, false}}, {U'@', {24, false, true}}},
      .shiftCode = 50,
      .level3Code = 108,
      .spares = {93, 97}};
}

TEST(TypingPlanTest, CharactersOfTheLayoutNeedNoSpareKey) {
  const auto plan = planTyping(U"aA@", smallTable());
  ASSERT_THAT(plan, SizeIs(1));
  EXPECT_THAT(plan[0].spares, IsEmpty());
  EXPECT_THAT(plan[0].strokes, ElementsAre(KeyStroke{38, false, false}, KeyStroke{38, true, false},
                                           KeyStroke{24, false, true}));
}

TEST(TypingPlanTest, ACharacterMissingFromTheLayoutGetsOneSpareKey) {
  const auto plan = planTyping(U"жaж", smallTable());
  ASSERT_THAT(plan, SizeIs(1));
  EXPECT_EQ(plan[0].spares, (std::map<std::uint8_t, char32_t>{{93, U'ж'}}));
  EXPECT_THAT(plan[0].strokes, ElementsAre(KeyStroke{93}, KeyStroke{38}, KeyStroke{93}));
}

TEST(TypingPlanTest, MoreCharactersThanSpareKeysGoInBatches) {
  const auto plan = planTyping(U"жшaя", smallTable());
  ASSERT_THAT(plan, SizeIs(2));
  EXPECT_EQ(plan[0].spares, (std::map<std::uint8_t, char32_t>{{93, U'ж'}, {97, U'ш'}}));
  EXPECT_THAT(plan[0].strokes, ElementsAre(KeyStroke{93}, KeyStroke{97}, KeyStroke{38}));
  EXPECT_EQ(plan[1].spares, (std::map<std::uint8_t, char32_t>{{93, U'я'}}));
  EXPECT_THAT(plan[1].strokes, ElementsAre(KeyStroke{93}));
}

TEST(TypingPlanTest, WithoutSpareKeysSuchATextHasNoPlan) {
  KeyTable table = smallTable();
  table.spares.clear();
  EXPECT_THAT(planTyping(U"ж", table), IsEmpty());
  EXPECT_THAT(planTyping(U"aA", table), SizeIs(1));
}

TEST(TypingPlanTest, ATextHasNoControlCharacters) {
  EXPECT_EQ(typeable("a\vb\tc\rd\x1b\x7f\xC2\x85\xE2\x80\xA8"
                     "e"),
            U"a b c d  e");
}

TEST(TypingPlanTest, ANewlineIsTheReturnKey) {
  EXPECT_EQ(typeable("a\n\nb"), U"a\r\rb");
  KeyTable table = smallTable();
  table.strokes[kReturn] = {36};
  const auto plan = planTyping(typeable("a\na"), table);
  ASSERT_THAT(plan, SizeIs(1));
  EXPECT_THAT(plan[0].spares, IsEmpty());
  EXPECT_THAT(plan[0].strokes, ElementsAre(KeyStroke{38}, KeyStroke{36}, KeyStroke{38}));
}

TEST(TypingPlanTest, ABlankGoesBetweenTextsUnlessOneJoinsTheOther) {
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

TEST(TypingPlanTest, InvalidUtf8IsLeftOut) {
  EXPECT_EQ(typeable("a\xFF\xC3(\xE4\xBD"), U"a(");
  EXPECT_EQ(typeable("\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80"), U"");
  EXPECT_EQ(typeable("é你😀"), U"é你😀");
}

TEST(AfterTyped, LeavesTheBytesBehindTheTypedCharacters) {
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
