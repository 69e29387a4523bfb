#include "quillback/insertion/x11/KeyTable.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>

#include "common/base/Handle.h"
#include "common/x11/XcbXkb.h"

namespace voxtrel::quillback {
namespace {

constexpr xkb_keycode_t kMaxCode = 255;
/// Code 8 is evdev's 0, which is no key; some programs drop it.
constexpr xkb_keycode_t kMinSpare = 9;

using Context = Handle<xkb_context, xkb_context_unref>;
using Keymap = Handle<xkb_keymap, xkb_keymap_unref>;
using State = Handle<xkb_state, xkb_state_unref>;

struct Codes {
  xkb_keycode_t first;
  xkb_keycode_t last;
};

Codes codesOf(xkb_keymap* keymap) {
  return {xkb_keymap_min_keycode(keymap), std::min(xkb_keymap_max_keycode(keymap), kMaxCode)};
}

State stateIn(xkb_keymap* keymap, std::uint32_t layout) {
  State state(xkb_state_new(keymap));
  xkb_state_update_mask(state.get(), 0, 0, 0, 0, 0, layout);
  return state;
}

std::uint8_t keyFor(xkb_keymap* keymap, xkb_state* state, xkb_keysym_t keysym) {
  const auto [first, last] = codesOf(keymap);
  for (auto code = first; code <= last; ++code) {
    if (xkb_state_key_get_one_sym(state, code) == keysym) return static_cast<std::uint8_t>(code);
  }
  return 0;
}

bool isOnKeypad(xkb_keysym_t keysym) {
  return keysym >= XKB_KEY_KP_Space && keysym <= XKB_KEY_KP_Equal;
}

bool isTypeable(char32_t character) {
  return (character >= U' ' && character != 0x7F) || character == kReturn;
}

/// Adds what the keys write with the state's modifiers, unless fewer modifiers write it as well.
void addStrokes(KeyTable& table, xkb_keymap* keymap, xkb_state* state, bool shift, bool level3) {
  const auto [first, last] = codesOf(keymap);
  for (auto code = first; code <= last; ++code) {
    const xkb_keysym_t keysym = xkb_state_key_get_one_sym(state, code);
    const char32_t character = xkb_keysym_to_utf32(keysym);
    if (isOnKeypad(keysym) || !isTypeable(character)) continue;
    table.strokes.try_emplace(character, KeyStroke{static_cast<std::uint8_t>(code), shift, level3});
  }
}

bool isSpare(xkb_keymap* keymap, xkb_keycode_t code) {
  for (xkb_layout_index_t i = 0; i < xkb_keymap_num_layouts_for_key(keymap, code); ++i) {
    for (xkb_level_index_t level = 0; level < xkb_keymap_num_levels_for_key(keymap, code, i);
         ++level) {
      const xkb_keysym_t* keysyms = nullptr;
      if (xkb_keymap_key_get_syms_by_level(keymap, code, i, level, &keysyms) > 0) return false;
    }
  }
  return true;
}

}  // namespace

KeyTable readKeyTable(xkb_keymap* keymap, std::uint32_t layout) {
  KeyTable table;
  const State state = stateIn(keymap, layout);
  table.shiftCode = keyFor(keymap, state.get(), XKB_KEY_Shift_L);
  table.level3Code = keyFor(keymap, state.get(), XKB_KEY_ISO_Level3_Shift);
  for (const bool level3 : {false, true}) {
    if (level3 && table.level3Code == 0) continue;
    for (const bool shift : {false, true}) {
      if (shift && table.shiftCode == 0) continue;
      const State pressed = stateIn(keymap, layout);
      if (shift) xkb_state_update_key(pressed.get(), table.shiftCode, XKB_KEY_DOWN);
      if (level3) xkb_state_update_key(pressed.get(), table.level3Code, XKB_KEY_DOWN);
      addStrokes(table, keymap, pressed.get(), shift, level3);
    }
  }
  const auto [first, last] = codesOf(keymap);
  for (auto code = std::max(first, kMinSpare); code <= last; ++code) {
    if (isSpare(keymap, code)) table.spares.push_back(static_cast<std::uint8_t>(code));
  }
  return table;
}

std::optional<KeyTable> readKeyTable(const XConnection& server) {
  const auto state = server.reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(server.get(), XCB_XKB_ID_USE_CORE_KBD));
  if (!state) return std::nullopt;
  const Context context(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES));
  if (!context) return std::nullopt;
  const Keymap keymap(xkb_x11_keymap_new_from_device(context.get(), server.get(), state->deviceID,
                                                     XKB_KEYMAP_COMPILE_NO_FLAGS));
  if (!keymap) return std::nullopt;
  return readKeyTable(keymap.get(), state->group);
}

}  // namespace voxtrel::quillback
