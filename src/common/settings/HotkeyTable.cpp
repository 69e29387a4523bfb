#include "common/settings/HotkeyTable.h"

#include <algorithm>
#include <array>

namespace voxtrel {
namespace {

struct Hotkey {
  std::string_view name;
  std::int64_t code;  ///< a macOS virtual key code
};

/// A code's first row has its canonical name; rows with the same code after it are aliases.
constexpr std::array<Hotkey, 12> kHotkeys = {{{"right_cmd", 54},
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
                                              {"f8", 100}}};
constexpr Hotkey kDefault = kHotkeys[0];

}  // namespace

std::int64_t hotkeyCodeOf(std::string_view name) {
  const auto* row = std::ranges::find(kHotkeys, name, &Hotkey::name);
  return row == kHotkeys.end() ? kDefault.code : row->code;
}

std::string_view hotkeyNameOf(std::int64_t code) {
  const auto* row = std::ranges::find(kHotkeys, code, &Hotkey::code);
  return row == kHotkeys.end() ? kDefault.name : row->name;
}

}  // namespace voxtrel
