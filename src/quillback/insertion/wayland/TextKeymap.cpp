#include "quillback/insertion/wayland/TextKeymap.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "quillback/text/Typeable.h"

namespace voxtrel::quillback {
namespace {

/// XKB's code minus evdev's.
constexpr std::uint32_t kXkbOffset = 8;
/// XWayland knows no higher codes.
constexpr std::uint32_t kMaxCode = 255 - kXkbOffset;

/// Some programs look at the place of a key as well, so the places of keys that write nothing stay free.
bool writesByItsPlace(std::uint32_t code) {
  constexpr std::array kFirstBlock{KEY_ESC,      KEY_BACKSPACE, KEY_TAB,        KEY_ENTER,
                                   KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTALT,
                                   KEY_SPACE,    KEY_CAPSLOCK,  KEY_NUMLOCK,    KEY_SCROLLLOCK};
  if (std::ranges::find(kFirstBlock, static_cast<int>(code)) != kFirstBlock.end()) return false;
  if (code >= KEY_F1 && code <= KEY_KPDOT) return false;  // with the keypad
  if (code == KEY_KPASTERISK) return false;
  return code < KEY_F11 || (code > KEY_F12 && code < KEY_KPENTER) || code > KEY_COMPOSE;
}

std::string symbolOf(char32_t character) {
  if (character == kReturn) return "Return";
  std::array<char, 16> name{};
  std::snprintf(name.data(), name.size(), "U%04X", static_cast<unsigned>(character));
  return name.data();
}

}  // namespace

TextKeymap::TextKeymap() {
  restart();
}

void TextKeymap::restart() {
  keys_ = {{kReturn, KEY_ENTER}, {U' ', KEY_SPACE}};
  free_.clear();
  for (std::uint32_t code = kMaxCode; code > 0; --code) {
    if (writesByItsPlace(code)) free_.push_back(code);
  }
  for (char32_t character = U'!'; character <= U'~'; ++character) addOne(character);
  hasChanged_ = true;
}

bool TextKeymap::addOne(char32_t character) {
  if (keys_.contains(character)) return true;
  if (free_.empty()) return false;
  keys_.emplace(character, free_.back());
  free_.pop_back();
  hasChanged_ = true;
  return true;
}

std::size_t TextKeymap::add(std::u32string_view text) {
  const auto end = std::ranges::find_if_not(text, [this](char32_t c) { return addOne(c); });
  return static_cast<std::size_t>(end - text.begin());
}

bool TextKeymap::takeChange() {
  const bool hasChanged = hasChanged_;
  hasChanged_ = false;
  return hasChanged;
}

std::string TextKeymap::xkbText() const {
  std::string codes;
  std::string symbols;
  for (const auto& [character, key] : keys_) {
    const std::string name = "<K" + std::to_string(key) + ">";
    codes += name + " = " + std::to_string(key + kXkbOffset) + ";\n";
    symbols += "key " + name + " { [ " + symbolOf(character) + " ] };\n";
  }
  return "xkb_keymap {\nxkb_keycodes { minimum = 8; maximum = 255;\n" + codes +
         "};\nxkb_types { include \"complete\" };\nxkb_compatibility { include \"complete\" };\n"
         "xkb_symbols {\n" +
         symbols + "};\n};\n";
}

}  // namespace voxtrel::quillback
