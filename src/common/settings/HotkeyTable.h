#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace voxtrel {

/// A key that can be held to speak.
/// Thread: any, as a value.
struct Hotkey {
  std::string_view name;    ///< canonical, under `hotkey` in the settings file
  std::string_view alias;   ///< second accepted name; empty if there is none
  std::int64_t code;        ///< under `hotkey_code` in the settings file: a macOS virtual key code
  std::string_view choice;  ///< in the settings window
  std::uint16_t evdevCode;  ///< on Linux: KEY_... of linux/input-event-codes.h
  std::string_view label;   ///< what people call the key on Linux
  bool needsShift = false;  ///< counts only if a Shift key is held when the key goes down
};

/// All keys, in the order of the settings window.
///
/// Right Command is the right Super key, the one with the window's sign, and Right Option the right
/// Alt key, AltGr in many layouts. "shift+\" is the backslash key of a US keyboard (beside Return
/// elsewhere) together with Shift, because that key alone types a character that people need.
inline constexpr std::array<Hotkey, 9> kHotkeys = {
    {{"right_cmd", "right_command", 54, "Right Command", 126, "the right Super key"},
     {"right_shift", "", 60, "Right Shift", 54, "the right Shift key"},
     {"right_ctrl", "right_control", 62, "Right Control", 97, "the right Control key"},
     {"right_opt", "right_option", 61, "Right Option", 100, "the right Alt key"},
     {"shift+\\", "", 42, "Shift + \\", 43, "Shift and the backslash key", true},
     {"f5", "", 96, "F5", 63, "F5"},
     {"f6", "", 97, "F6", 64, "F6"},
     {"f7", "", 98, "F7", 65, "F7"},
     {"f8", "", 100, "F8", 66, "F8"}}};
inline constexpr const Hotkey& kDefaultHotkey = kHotkeys[0];

/// The key with exactly this name or alias; null if there is none.
const Hotkey* hotkeyNamed(std::string_view name);

/// The key with this code; null if there is none.
const Hotkey* hotkeyWithCode(std::int64_t code);

}  // namespace voxtrel
