#include "common/settings/HotkeyTable.h"

#include <algorithm>

namespace voxtrel {

const Hotkey* hotkeyNamed(std::string_view name) {
  if (name.empty()) return nullptr;  // keys without an alias have an empty one
  const auto* row = std::ranges::find_if(kHotkeys, [name](const Hotkey& hotkey) {
    return hotkey.name == name || hotkey.alias == name;
  });
  return row == kHotkeys.end() ? nullptr : row;
}

const Hotkey* hotkeyWithCode(std::int64_t code) {
  const auto* row = std::ranges::find(kHotkeys, code, &Hotkey::code);
  return row == kHotkeys.end() ? nullptr : row;
}

}  // namespace voxtrel
