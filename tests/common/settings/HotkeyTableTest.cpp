#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "common/settings/ConfigManager.h"

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

TEST(Hotkeys, CanonicalNamesAndCodesAreTurnedIntoEachOther) {
  for (const auto& [name, code] : kCanonical) {
    EXPECT_EQ(ConfigManager::hotkeyNameToCode(name), code) << name;
    EXPECT_EQ(ConfigManager::hotkeyCodeToName(code), name) << code;
  }
}

TEST(Hotkeys, AliasesBecomeCanonicalNamesThereAndBack) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kAliases = {
      {{"right_command", "right_cmd"},
       {"right_control", "right_ctrl"},
       {"right_option", "right_opt"}}};
  for (const auto& [alias, name] : kAliases) {
    const std::int64_t code = ConfigManager::hotkeyNameToCode(alias);
    EXPECT_EQ(code, ConfigManager::hotkeyNameToCode(name)) << alias;
    EXPECT_EQ(ConfigManager::hotkeyCodeToName(code), name) << alias;
  }
  EXPECT_EQ(ConfigManager::hotkeyNameToCode("right_option"), 61);
  EXPECT_EQ(ConfigManager::hotkeyCodeToName(61), "right_opt");
  EXPECT_EQ(ConfigManager::hotkeyNameToCode("right_control"), 62);
}

TEST(Hotkeys, AnyOtherNameHasTheCodeOfRightCommand) {
  for (const std::string_view name : {"", "F5", " f5", "f5 ", "\"f5\"", "'f6'", "f9", "shift+",
                                      "shift+\\\\", "Right_shift", "RIGHT_OPT"}) {
    EXPECT_EQ(ConfigManager::hotkeyNameToCode(name), 54) << name;
  }
}

TEST(Hotkeys, AnyOtherCodeHasTheNameOfRightCommand) {
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  for (const std::int64_t code :
       {kMin, std::int64_t{-1}, std::int64_t{0}, std::int64_t{41}, std::int64_t{55},
        std::int64_t{99}, std::int64_t{101}, (std::int64_t{1} << 32) + 96, kMax}) {
    EXPECT_EQ(ConfigManager::hotkeyCodeToName(code), "right_cmd") << code;
  }
}

}  // namespace
}  // namespace voxtrel
