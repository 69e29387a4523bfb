#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

#include <memory>

#include "quillback/insertion/x11/KeyTable.h"

namespace voxtrel::quillback {
namespace {

struct Unref {
  void operator()(xkb_context* context) const { xkb_context_unref(context); }
  void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
};

KeyTable tableOf(const char* layouts, std::uint32_t layout = 0) {
  const std::unique_ptr<xkb_context, Unref> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
  const xkb_rule_names names{"evdev", "pc105", layouts, "", ""};
  const std::unique_ptr<xkb_keymap, Unref> keymap(
      xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
  return readKeyTable(keymap.get(), layout);
}

KeyStroke strokeOf(const KeyTable& table, char32_t character) {
  const auto found = table.strokes.find(character);
  return found == table.strokes.end() ? KeyStroke{} : found->second;
}

TEST(KeyTableTest, ACharacterHasItsKeyInEachLayout) {
  EXPECT_EQ(strokeOf(tableOf("us"), U'y'), (KeyStroke{29, false, false}));
  EXPECT_EQ(strokeOf(tableOf("de"), U'y'), (KeyStroke{52, false, false}));
  EXPECT_EQ(strokeOf(tableOf("us"), U'@'), (KeyStroke{11, true, false}));
  EXPECT_EQ(strokeOf(tableOf("de"), U'@'), (KeyStroke{24, false, true}));
  EXPECT_EQ(strokeOf(tableOf("fr"), U'1'), (KeyStroke{10, true, false}));
  EXPECT_EQ(strokeOf(tableOf("de"), U'ß'), (KeyStroke{20, false, false}));
  EXPECT_FALSE(tableOf("us").strokes.contains(U'ß'));
}

TEST(KeyTableTest, DeadKeysAreLeftOut) {
  EXPECT_FALSE(tableOf("de").strokes.contains(U'^'));
  EXPECT_FALSE(tableOf("de").strokes.contains(U'`'));
  EXPECT_TRUE(tableOf("us").strokes.contains(U'^'));
}

TEST(KeyTableTest, OnlyTheGivenLayoutCounts) {
  EXPECT_TRUE(tableOf("us,ru", 0).strokes.contains(U'q'));
  EXPECT_FALSE(tableOf("us,ru", 0).strokes.contains(U'й'));
  EXPECT_TRUE(tableOf("us,ru", 1).strokes.contains(U'й'));
  EXPECT_FALSE(tableOf("us,ru", 1).strokes.contains(U'q'));
}

TEST(KeyTableTest, KeypadKeysAndControlCharactersAreLeftOut) {
  const KeyTable table = tableOf("us");
  EXPECT_EQ(strokeOf(table, U'1'), (KeyStroke{10, false, false}));
  EXPECT_EQ(strokeOf(table, U'+'), (KeyStroke{21, true, false}));
  EXPECT_FALSE(table.strokes.contains(U'\n'));
  EXPECT_FALSE(table.strokes.contains(U'\t'));
}

TEST(KeyTableTest, TheReturnKeyIsTheOneOfTheMainBlock) {
  for (const char* layout : {"us", "de", "ru"}) {
    EXPECT_EQ(strokeOf(tableOf(layout), kReturn), (KeyStroke{36, false, false})) << layout;
  }
}

TEST(KeyTableTest, SpareKeysAreThoseThatDoNothing) {
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
