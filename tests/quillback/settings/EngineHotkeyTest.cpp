#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <map>
#include <string>

#include "quillback/settings/HotkeyTable.h"

namespace voxtrel::quillback {
namespace {

TEST(HotkeyTable, KnowsEveryNameWithItsCode) {
  const std::map<std::string, std::int64_t> codes{{"right_cmd", 54},
                                                  {"right_command", 54},
                                                  {"right_shift", 60},
                                                  {"right_ctrl", 62},
                                                  {"right_control", 62},
                                                  {"right_opt", 61},
                                                  {"right_option", 61},
                                                  {"shift+\\", 42},
                                                  {"f5", 96},
                                                  {"f6", 97},
                                                  {"f7", 98},
                                                  {"f8", 100}};
  ASSERT_EQ(kHotkeys.size(), codes.size());
  for (const auto& [name, code] : codes) {
    const auto hotkey = hotkeyNamed(name);
    ASSERT_TRUE(hotkey) << name;
    EXPECT_EQ(hotkey->code, code) << name;
  }
}

TEST(HotkeyTable, GivesEveryCodeItsCanonicalName) {
  const std::map<std::int64_t, std::string_view> names{
      {54, "right_cmd"}, {60, "right_shift"}, {62, "right_ctrl"},
      {61, "right_opt"}, {42, "shift+\\"},    {96, "f5"},
      {97, "f6"},        {98, "f7"},          {100, "f8"}};
  for (const auto& [code, name] : names) {
    ASSERT_TRUE(hotkeyWithCode(code)) << code;
    EXPECT_EQ(hotkeyWithCode(code)->name, name);
  }
}

TEST(HotkeyTable, HasNoKeyForAnotherNameOrCode) {
  for (const char* name : {"", "F5", " f5", "f5 ", "'f5'", "shift+\\\\", "right-cmd", "f9"}) {
    EXPECT_FALSE(hotkeyNamed(name)) << name;
  }
  for (const std::int64_t code : {-1L, 0L, 43L, 55L, 99L, 101L}) EXPECT_FALSE(hotkeyWithCode(code));
}

TEST(HotkeyTable, NamesTheKeysOfLinuxKeyboards) {
  EXPECT_EQ(hotkeyNamed("right_cmd")->evdevCode, KEY_RIGHTMETA);
  EXPECT_EQ(hotkeyNamed("right_shift")->evdevCode, KEY_RIGHTSHIFT);
  EXPECT_EQ(hotkeyNamed("right_ctrl")->evdevCode, KEY_RIGHTCTRL);
  EXPECT_EQ(hotkeyNamed("right_opt")->evdevCode, KEY_RIGHTALT);
  EXPECT_EQ(hotkeyNamed("shift+\\")->evdevCode, KEY_BACKSLASH);
  EXPECT_EQ(hotkeyNamed("f5")->evdevCode, KEY_F5);
  EXPECT_EQ(hotkeyNamed("f6")->evdevCode, KEY_F6);
  EXPECT_EQ(hotkeyNamed("f7")->evdevCode, KEY_F7);
  EXPECT_EQ(hotkeyNamed("f8")->evdevCode, KEY_F8);
}

TEST(HotkeyTable, OnlyTheCharacterKeyNeedsShift) {
  for (const Hotkey& hotkey : kHotkeys) EXPECT_EQ(hotkey.needsShift, hotkey.code == 42);
}

TEST(HotkeyTable, AnAliasIsTheSameKeyAsItsCanonicalName) {
  for (const Hotkey& hotkey : kHotkeys) {
    const Hotkey canonical = *hotkeyWithCode(hotkey.code);
    EXPECT_EQ(hotkey.evdevCode, canonical.evdevCode);
    EXPECT_EQ(hotkey.keysym, canonical.keysym);
    EXPECT_EQ(hotkey.otherKeysym, canonical.otherKeysym);
    EXPECT_EQ(hotkey.label, canonical.label);
  }
}

}  // namespace
}  // namespace voxtrel::quillback
