#pragma once

#include <cstdint>
#include <string_view>

namespace voxtrel {

/// The code of the hotkey with exactly this name, aliases included; 54 (Right Command) for any
/// other.
std::int64_t hotkeyCodeOf(std::string_view name);

/// The canonical name of the hotkey with this code; "right_cmd" for any other. Never an alias.
std::string_view hotkeyNameOf(std::int64_t code);

}  // namespace voxtrel
