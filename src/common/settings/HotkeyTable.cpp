#include "common/settings/HotkeyTable.h"

#include <algorithm>

namespace voxtrel {

const Hotkey* hotkeyNamed(std::string_view name) {
  if (name.empty()) return nullptr;  // keys without an alias have an empty one
  const auto* row = std::find_if(kHotkeys.begin(), kHotkeys.end(), [name](const Hotkey& hotkey) {
    return hotkey.name == name || hotkey.alias == name;
  });
  return row == kHotkeys.end() ? nullptr : row;
}

const Hotkey* hotkeyWithCode(std::int64_t code) {
  const auto* row = std::find_if(kHotkeys.begin(), kHotkeys.end(),
                                 [code](const Hotkey& hotkey) { return hotkey.code == code; });
  return row == kHotkeys.end() ? nullptr : row;
}

}  // namespace voxtrel
