#include <gmock/gmock.h>

#include "quillback/insertion/x11/TypingPlan.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Spares = std::map<std::uint8_t, SpareCharacters>;

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
  EXPECT_EQ(plan[0].spares, (Spares{{93, {U'ж', U'ж'}}}));
  EXPECT_THAT(plan[0].strokes, ElementsAre(KeyStroke{93}, KeyStroke{38}, KeyStroke{93}));
}

TEST(TypingPlanTest, MoreCharactersThanSpareKeysGoToTheSecondLevels) {
  const auto plan = planTyping(U"жшaяжя", smallTable());
  ASSERT_THAT(plan, SizeIs(1));
  EXPECT_EQ(plan[0].spares, (Spares{{93, {U'ж', U'я'}}, {97, {U'ш', U'ш'}}}));
  EXPECT_THAT(plan[0].strokes,
              ElementsAre(KeyStroke{93}, KeyStroke{97}, KeyStroke{38}, KeyStroke{93, true},
                          KeyStroke{93}, KeyStroke{93, true}));
}

TEST(TypingPlanTest, MoreCharactersThanLevelsGoInBatches) {
  const auto plan = planTyping(U"жшяюэж", smallTable());
  ASSERT_THAT(plan, SizeIs(2));
  EXPECT_EQ(plan[0].spares, (Spares{{93, {U'ж', U'я'}}, {97, {U'ш', U'ю'}}}));
  EXPECT_EQ(plan[1].spares, (Spares{{93, {U'э', U'э'}}, {97, {U'ж', U'ж'}}}));
  EXPECT_THAT(plan[1].strokes, ElementsAre(KeyStroke{93}, KeyStroke{97}));
}

TEST(TypingPlanTest, WithoutAShiftKeyASpareKeyHasOneCharacter) {
  KeyTable table = smallTable();
  table.shiftCode = 0;
  const auto plan = planTyping(U"жшaя", table);
  ASSERT_THAT(plan, SizeIs(2));
  EXPECT_EQ(plan[0].spares, (Spares{{93, {U'ж', U'ж'}}, {97, {U'ш', U'ш'}}}));
  EXPECT_THAT(plan[0].strokes, ElementsAre(KeyStroke{93}, KeyStroke{97}, KeyStroke{38}));
  EXPECT_EQ(plan[1].spares, (Spares{{93, {U'я', U'я'}}}));
}

TEST(TypingPlanTest, WithoutSpareKeysSuchATextHasNoPlan) {
  KeyTable table = smallTable();
  table.spares.clear();
  EXPECT_THAT(planTyping(U"ж", table), IsEmpty());
  EXPECT_THAT(planTyping(U"aA", table), SizeIs(1));
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

}  // namespace
}  // namespace voxtrel::quillback
