#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace voxtrel::quillback {

/// A push-to-talk key: as the settings call it and as this platform does.
struct Hotkey {
  std::string_view name;      ///< under `hotkey` in the settings
  std::int64_t code;          ///< under `hotkey_code`: a macOS virtual key code
  std::uint16_t evdevCode;    ///< KEY_... of linux/input-event-codes.h; an X key code is 8 more
  std::uint32_t keysym;       ///< XK_... that a usual layout gives this key
  std::uint32_t otherKeysym;  ///< what some layouts give it instead; 0 where there is none
  bool needsShift;            ///< only counts while either Shift is held as the key goes down
  std::string_view label;     ///< what is printed on the key, for people
};

/// All keys that can be held to speak. A code names a place on a keyboard, and so does evdevCode: it
/// decides, and the keysyms serve where key codes do not follow evdev's. A code's first row has its
/// canonical name; the rows with the same code after it are aliases.
///
/// Right Command is the right Super key, the one with the window's sign, called Meta by some. Right
/// Option is the right Alt key, which layouts with a third level call ISO_Level3_Shift (AltGr).
/// "shift+\" is the backslash key of a US keyboard (beside Return elsewhere, whatever is printed on
/// it) while a Shift key is held, because the key alone types a character that people need; letting
/// go of Shift first does not end the recording.
inline constexpr std::array<Hotkey, 12> kHotkeys = {
    {{"right_cmd", 54, 126, 0xFFEC, 0xFFE8, false, "the right Super key"},
     {"right_command", 54, 126, 0xFFEC, 0xFFE8, false, "the right Super key"},
     {"right_shift", 60, 54, 0xFFE2, 0, false, "the right Shift key"},
     {"right_ctrl", 62, 97, 0xFFE4, 0, false, "the right Control key"},
     {"right_control", 62, 97, 0xFFE4, 0, false, "the right Control key"},
     {"right_opt", 61, 100, 0xFFEA, 0xFE03, false, "the right Alt key"},
     {"right_option", 61, 100, 0xFFEA, 0xFE03, false, "the right Alt key"},
     {"shift+\\", 42, 43, 0x005C, 0x007C, true, "Shift and the backslash key"},
     {"f5", 96, 63, 0xFFC2, 0, false, "F5"},
     {"f6", 97, 64, 0xFFC3, 0, false, "F6"},
     {"f7", 98, 65, 0xFFC4, 0, false, "F7"},
     {"f8", 100, 66, 0xFFC5, 0, false, "F8"}}};
inline constexpr Hotkey kDefaultHotkey = kHotkeys[0];

/// The key that has this name, an alias too; nothing for any other text.
std::optional<Hotkey> hotkeyNamed(std::string_view name);

/// The key that has this code, by its canonical name; nothing for any other number.
std::optional<Hotkey> hotkeyWithCode(std::int64_t code);

}  // namespace voxtrel::quillback
