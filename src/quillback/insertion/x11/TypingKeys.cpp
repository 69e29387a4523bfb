#include "quillback/insertion/x11/TypingKeys.h"

#include <xcb/xtest.h>

#include <utility>

#include "common/x11/XcbXkb.h"

namespace voxtrel::quillback {
namespace {

/// All but the two modifiers of Num Lock and Scroll Lock, which change nothing that we type.
constexpr std::uint8_t kLocks = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_CONTROL |
                                XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | XCB_MOD_MASK_5;
constexpr std::uint8_t kEveryModifier = 0xFF;

}  // namespace

void TypingKeys::send(std::uint8_t code, bool isDown) {
  const std::uint8_t event = isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
  xcb_test_fake_input(server_.get(), event, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
  ownKeys_.sent(code, isDown);
}

void TypingKeys::letGoOfHeldKeys() {
  const auto held = server_.reply<xcb_query_keymap_reply_t>(xcb_query_keymap(server_.get()));
  if (!held) return;
  for (unsigned code = 0; code < 8 * sizeof held->keys; ++code) {
    if ((held->keys[code / 8] >> (code % 8) & 1) == 0) continue;
    send(static_cast<std::uint8_t>(code), false);
  }
}

void TypingKeys::takeLocksOff() {
  const auto state = server_.reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(server_.get(), XCB_XKB_ID_USE_CORE_KBD));
  if (!state) return;
  const auto locked = static_cast<std::uint8_t>(state->lockedMods & kLocks);
  if (locked == 0 && state->latchedMods == 0) return;
  locksTakenOff_ |= locked;
  xcb_xkb_latch_lock_state(server_.get(), XCB_XKB_ID_USE_CORE_KBD, locked, 0, 0, 0, kEveryModifier,
                           0, 0);
}

void TypingKeys::clearTheWay() {
  letGoOfHeldKeys();
  takeLocksOff();
}

void TypingKeys::press(const KeyStroke& stroke, const KeyTable& table) {
  if (stroke.shift) send(table.shiftCode, true);
  if (stroke.level3) send(table.level3Code, true);
  send(stroke.code, true);
  send(stroke.code, false);
  if (stroke.level3) send(table.level3Code, false);
  if (stroke.shift) send(table.shiftCode, false);
}

void TypingKeys::restoreLocks() {
  const auto locks = std::exchange(locksTakenOff_, std::uint8_t{0});
  if (locks == 0) return;
  xcb_xkb_latch_lock_state(server_.get(), XCB_XKB_ID_USE_CORE_KBD, locks, locks, 0, 0, 0, 0, 0);
  server_.flush();
}

}  // namespace voxtrel::quillback
