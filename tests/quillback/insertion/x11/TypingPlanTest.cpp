#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon.h>

#include <memory>

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

struct Released {
  void operator()(xkb_context* context) const { xkb_context_unref(context); }
  void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
};

KeyTable tableOf(const char* layouts, std::uint32_t layout = 0) {
  const std::unique_ptr<xkb_context, Released> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
  const xkb_rule_names names{"evdev", "pc105", layouts, "", ""};
  const std::unique_ptr<xkb_keymap, Released> keymap(
      xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
  return readKeyTable(keymap.get(), layout);
}

KeyStroke strokeOf(const KeyTable& table, char32_t character) {
  const auto found = table.strokes.find(character);
  return found == table.strokes.end() ? KeyStroke{} : found->second;
}

TEST(TypingPlanTest, CharactersOfTheLayoutNeedNoSpareKey) {
  const auto plan = planTyping(U"aA@", smallTable());
  ASSERT_THAT(plan, SizeIs(1));
  EXPECT_THAT(plan[0].spares, IsEmpty());
  EXPECT_THAT(plan[0].strokes, ElementsAre(KeyStroke{38, false, false}, KeyStroke{38, true, false},
                                           KeyStroke{24, false, true}));
}

TEST(TypingPlanTest, ACharacterThatTheLayoutLacksGetsOneSpareKeyHoweverOftenItComes) {
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

TEST(TypingPlanTest, WithoutSpareKeysSuchATextCannotBeTyped) {
  KeyTable table = smallTable();
  table.spares.clear();
  EXPECT_THAT(planTyping(U"ж", table), IsEmpty());
  EXPECT_THAT(planTyping(U"aA", table), SizeIs(1));
}

TEST(TypingPlanTest, ATextIsOneLineWithoutControlCharacters) {
  EXPECT_EQ(typeable("a\nb\tc\rd\x1b\x7f\xC2\x85\xE2\x80\xA8"
                     "e"),
            U"a b c d  e");
}

TEST(TypingPlanTest, WhatIsNoUtf8IsLeftOut) {
  EXPECT_EQ(typeable("a\xFF\xC3(\xE4\xBD"), U"a(");
  EXPECT_EQ(typeable("\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80"), U"");
  EXPECT_EQ(typeable("é你😀"), U"é你😀");
}

TEST(KeyTableTest, EachLayoutHasItsOwnKeysForACharacter) {
  EXPECT_EQ(strokeOf(tableOf("us"), U'y'), (KeyStroke{29, false, false}));
  EXPECT_EQ(strokeOf(tableOf("de"), U'y'), (KeyStroke{52, false, false}));
  EXPECT_EQ(strokeOf(tableOf("us"), U'@'), (KeyStroke{11, true, false}));
  EXPECT_EQ(strokeOf(tableOf("de"), U'@'), (KeyStroke{24, false, true}));
  EXPECT_EQ(strokeOf(tableOf("fr"), U'1'), (KeyStroke{10, true, false}));
  EXPECT_EQ(strokeOf(tableOf("de"), U'ß'), (KeyStroke{20, false, false}));
  EXPECT_FALSE(tableOf("us").strokes.contains(U'ß'));
}

TEST(KeyTableTest, DeadKeysDoNotCountAsTheirCharacters) {
  EXPECT_FALSE(tableOf("de").strokes.contains(U'^'));
  EXPECT_FALSE(tableOf("de").strokes.contains(U'`'));
  EXPECT_TRUE(tableOf("us").strokes.contains(U'^'));
}

TEST(KeyTableTest, TheChosenLayoutOfSeveralCounts) {
  EXPECT_TRUE(tableOf("us,ru", 0).strokes.contains(U'q'));
  EXPECT_FALSE(tableOf("us,ru", 0).strokes.contains(U'й'));
  EXPECT_TRUE(tableOf("us,ru", 1).strokes.contains(U'й'));
  EXPECT_FALSE(tableOf("us,ru", 1).strokes.contains(U'q'));
}

TEST(KeyTableTest, DigitsComeFromTheMainKeysAndControlCharactersFromNone) {
  const KeyTable table = tableOf("us");
  EXPECT_EQ(strokeOf(table, U'1'), (KeyStroke{10, false, false}));
  EXPECT_EQ(strokeOf(table, U'+'), (KeyStroke{21, true, false}));
  EXPECT_FALSE(table.strokes.contains(U'\r'));
  EXPECT_FALSE(table.strokes.contains(U'\t'));
}

TEST(KeyTableTest, SpareKeysAreThoseWithoutAnyMeaning) {
  const KeyTable table = tableOf("us");
  EXPECT_GE(table.spares.size(), 5u);
  for (const auto code : table.spares) {
    EXPECT_GE(code, 9);
    EXPECT_NE(code, 134) << "the right Super key";
    EXPECT_NE(code, 38);
  }
}

}  // namespace
}  // namespace voxtrel::quillback
