#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "common/settings/ConfigManager.h"
#include "common/settings/HotkeyTable.h"

namespace voxtrel {
namespace {

constexpr std::array<std::pair<std::string_view, std::int64_t>, 9> kCanonical = {{
    {"right_cmd", 54},
    {"right_shift", 60},
    {"right_ctrl", 62},
    {"right_opt", 61},
    {"shift+\\", 42},
    {"f5", 96},
    {"f6", 97},
    {"f7", 98},
    {"f8", 100},
}};
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kAliases = {
    {{"right_command", "right_cmd"},
     {"right_control", "right_ctrl"},
     {"right_option", "right_opt"}}};
constexpr std::array<std::string_view, 12> kUnknownNames = {
    "",   "F5",     " f5",        "f5 ",         "\"f5\"",    "'f6'",
    "f9", "shift+", "shift+\\\\", "Right_shift", "RIGHT_OPT", "right-cmd"};
constexpr std::array<std::int64_t, 10> kUnknownCodes = {std::numeric_limits<std::int64_t>::min(),
                                                        -1,
                                                        0,
                                                        41,
                                                        43,
                                                        55,
                                                        99,
                                                        101,
                                                        (std::int64_t{1} << 32) + 96,
                                                        std::numeric_limits<std::int64_t>::max()};

TEST(Hotkeys, CanonicalNamesAndCodesAreTurnedIntoEachOther) {
  ASSERT_EQ(kHotkeys.size(), kCanonical.size());
  for (const auto& [name, code] : kCanonical) {
    EXPECT_EQ(ConfigManager::hotkeyNameToCode(name), code) << name;
    EXPECT_EQ(ConfigManager::hotkeyCodeToName(code), name) << code;
    ASSERT_NE(hotkeyNamed(name), nullptr) << name;
    EXPECT_EQ(hotkeyNamed(name)->name, name);
    EXPECT_EQ(hotkeyNamed(name), hotkeyWithCode(code)) << name;
  }
}

TEST(Hotkeys, AliasesBecomeCanonicalNamesThereAndBack) {
  for (const auto& [alias, name] : kAliases) {
    const std::int64_t code = ConfigManager::hotkeyNameToCode(alias);
    EXPECT_EQ(code, ConfigManager::hotkeyNameToCode(name)) << alias;
    EXPECT_EQ(ConfigManager::hotkeyCodeToName(code), name) << alias;
    ASSERT_NE(hotkeyNamed(alias), nullptr) << alias;
    EXPECT_EQ(hotkeyNamed(alias), hotkeyNamed(name)) << alias;
  }
  EXPECT_EQ(ConfigManager::hotkeyNameToCode("right_option"), 61);
  EXPECT_EQ(ConfigManager::hotkeyCodeToName(61), "right_opt");
  EXPECT_EQ(ConfigManager::hotkeyNameToCode("right_control"), 62);
}

TEST(Hotkeys, AnyOtherNameHasTheCodeOfRightCommandAndNoKey) {
  for (const std::string_view name : kUnknownNames) {
    EXPECT_EQ(ConfigManager::hotkeyNameToCode(name), 54) << name;
    EXPECT_EQ(hotkeyNamed(name), nullptr) << name;
  }
}

TEST(Hotkeys, AnyOtherCodeHasTheNameOfRightCommandAndNoKey) {
  for (const std::int64_t code : kUnknownCodes) {
    EXPECT_EQ(ConfigManager::hotkeyCodeToName(code), "right_cmd") << code;
    EXPECT_EQ(hotkeyWithCode(code), nullptr) << code;
  }
}

TEST(Hotkeys, AreKeysOfLinuxKeyboards) {
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

TEST(Hotkeys, NeedShiftOnlyWhereTheKeyAloneTypesACharacter) {
  for (const Hotkey& hotkey : kHotkeys) EXPECT_EQ(hotkey.needsShift, hotkey.code == 42);
}

TEST(Hotkeys, BeginWithTheDefault) {
  EXPECT_EQ(&kDefaultHotkey, hotkeyNamed("right_cmd"));
}

}  // namespace
}  // namespace voxtrel
