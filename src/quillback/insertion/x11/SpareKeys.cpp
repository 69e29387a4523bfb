#include "quillback/insertion/x11/SpareKeys.h"

#include <xkbcommon/xkbcommon.h>

#include <array>

namespace voxtrel::quillback {

void SpareKeys::map(std::uint8_t code, xcb_keysym_t keysym) {
  const std::array<xcb_keysym_t, 2> levels = {keysym, keysym};
  xcb_change_keyboard_mapping(server_.get(), 1, code, static_cast<std::uint8_t>(levels.size()),
                              levels.data());
}

void SpareKeys::assign(const std::map<std::uint8_t, char32_t>& characters) {
  for (const auto& [code, character] : characters) {
    const xcb_keysym_t keysym = xkb_utf32_to_keysym(character);
    // Every program on the desktop reads its keymap again for each of these.
    if (const auto old = assigned_.find(code); old != assigned_.end() && old->second == keysym) {
      continue;
    }
    map(code, keysym);
    assigned_[code] = keysym;
  }
  server_.flush();
}

void SpareKeys::restore() {
  if (assigned_.empty()) return;
  std::map<std::uint8_t, xcb_get_keyboard_mapping_cookie_t> questions;
  for (const auto& [code, keysym] : assigned_) {
    questions.emplace(code, xcb_get_keyboard_mapping(server_.get(), code, 1));
  }
  for (const auto& [code, question] : questions) {
    const auto now = server_.reply<xcb_get_keyboard_mapping_reply_t>(question);
    const bool isOurs = !now || (now->keysyms_per_keycode > 0 &&
                                 *xcb_get_keyboard_mapping_keysyms(now.get()) == assigned_[code]);
    if (isOurs) map(code, XCB_NO_SYMBOL);
  }
  assigned_.clear();
  server_.flush();
}

}  // namespace voxtrel::quillback
