#include <gmock/gmock.h>
#include <linux/input-event-codes.h>
#include <xkbcommon/xkbcommon.h>

#include <memory>
#include <set>

#include "quillback/insertion/wayland/TextKeymap.h"
#include "quillback/text/Typeable.h"

namespace voxtrel::quillback {
namespace {

/// Reads keys as a client does.
class Client {
 public:
  explicit Client(const TextKeymap& keymap)
      : context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref),
        keymap_(xkb_keymap_new_from_string(context_.get(), keymap.xkbText().c_str(),
                                           XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS),
                xkb_keymap_unref),
        state_(xkb_state_new(keymap_.get()), xkb_state_unref) {}

  char32_t read(std::uint32_t key) const { return xkb_state_key_get_utf32(state_.get(), key + 8); }

 private:
  std::unique_ptr<xkb_context, void (*)(xkb_context*)> context_;
  std::unique_ptr<xkb_keymap, void (*)(xkb_keymap*)> keymap_;
  std::unique_ptr<xkb_state, void (*)(xkb_state*)> state_;
};

std::u32string many(std::size_t count) {
  std::u32string text;
  for (std::size_t i = 0; i < count; ++i) text.push_back(static_cast<char32_t>(U'一' + i));
  return text;
}

TEST(TextKeymapTest, AClientReadsEachCharacterOfAnyScript) {
  TextKeymap keymap;
  const std::u32string text = U"aZ ~äß€Ωжя漢字😀́ \r";
  ASSERT_EQ(keymap.add(text), text.size());
  const Client client(keymap);
  for (const char32_t character : text) {
    EXPECT_EQ(client.read(keymap.keyOf(character)), character) << std::hex << int(character);
  }
}

TEST(TextKeymapTest, AsciiNeedsNoNewKeymap) {
  TextKeymap keymap;
  EXPECT_TRUE(keymap.takeChange());
  std::u32string ascii = U"\r";
  for (char32_t character = U' '; character <= U'~'; ++character) ascii.push_back(character);
  EXPECT_EQ(keymap.add(ascii), ascii.size());
  EXPECT_FALSE(keymap.takeChange());
  const Client client(keymap);
  for (const char32_t character : ascii) {
    EXPECT_EQ(client.read(keymap.keyOf(character)), character);
  }
}

TEST(TextKeymapTest, ACharacterKeepsItsKeyWhileTheKeymapGrows) {
  TextKeymap keymap;
  ASSERT_EQ(keymap.add(U"жя"), 2U);
  const std::uint32_t key = keymap.keyOf(U'ж');
  EXPECT_TRUE(keymap.takeChange());
  ASSERT_EQ(keymap.add(U"ä"), 1U);
  EXPECT_TRUE(keymap.takeChange());
  EXPECT_EQ(keymap.keyOf(U'ж'), key);
}

TEST(TextKeymapTest, AFullKeymapTakesNoMoreUntilItIsRestarted) {
  TextKeymap keymap;
  const std::u32string text = many(500);
  std::size_t typed = 0;
  int keymaps = 0;
  while (typed < text.size()) {
    const std::size_t count = keymap.add(std::u32string_view(text).substr(typed));
    if (typed + count < text.size()) {
      EXPECT_EQ(keymap.add(std::u32string_view(text).substr(typed + count)), 0U);
    }
    ASSERT_GT(count, 0U);
    keymaps += keymap.takeChange() ? 1 : 0;
    const Client client(keymap);
    for (std::size_t i = typed; i < typed + count; ++i) {
      ASSERT_EQ(client.read(keymap.keyOf(text[i])), text[i]);
    }
    typed += count;
    keymap.restart();
  }
  EXPECT_LT(keymaps, 10);
  EXPECT_EQ(keymap.add(U"abc"), 3U);
}

TEST(TextKeymapTest, NoCharacterIsInThePlaceOfAKeyThatWritesNothing) {
  TextKeymap keymap;
  const std::u32string text = many(60);
  ASSERT_EQ(keymap.add(text), text.size());
  std::set<std::uint32_t> keys;
  for (const char32_t character : text + U"abcxyzABC!") keys.insert(keymap.keyOf(character));
  EXPECT_EQ(keys.size(), text.size() + 10);
  for (const int key : {KEY_ESC, KEY_BACKSPACE, KEY_TAB, KEY_ENTER, KEY_LEFTCTRL, KEY_RIGHTMETA,
                        KEY_F1, KEY_F12, KEY_UP, KEY_DELETE}) {
    EXPECT_FALSE(keys.contains(static_cast<std::uint32_t>(key))) << key;
  }
  for (const std::uint32_t key : keys) EXPECT_LE(key + 8, 255U);
}

}  // namespace
}  // namespace voxtrel::quillback
