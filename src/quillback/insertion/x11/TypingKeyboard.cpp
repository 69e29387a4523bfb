#include "quillback/insertion/x11/TypingKeyboard.h"

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <set>
#include <span>
#include <utility>

#include "common/x11/XcbXkb.h"

namespace voxtrel::quillback {
namespace {

/// All modifiers except those of Num Lock and Scroll Lock, which do not change what we type.
constexpr std::uint8_t kLocks = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_CONTROL |
                                XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | XCB_MOD_MASK_5;
constexpr std::uint8_t kAllModifiers = 0xFF;

/// Each key with each character that it may write.
template <typename Assignment>
std::vector<std::pair<std::uint8_t, xcb_keysym_t>> flattened(const Assignment& assignment) {
  std::vector<std::pair<std::uint8_t, xcb_keysym_t>> all;
  for (const auto& [code, levels] : assignment) {
    for (const xcb_keysym_t keysym : levels) all.emplace_back(code, keysym);
  }
  return all;
}

/// Whether a key writes one of `characters` and nothing else.
bool writesOnly(const xcb_get_keyboard_mapping_reply_t& key,
                const std::set<xcb_keysym_t>& characters) {
  const std::span keysyms(xcb_get_keyboard_mapping_keysyms(&key), key.keysyms_per_keycode);
  return !keysyms.empty() && characters.contains(keysyms.front()) &&
         std::ranges::all_of(keysyms, [&](xcb_keysym_t keysym) {
           return keysym == XCB_NO_SYMBOL || characters.contains(keysym);
         });
}

}  // namespace

TypingKeyboard::~TypingKeyboard() {
  restoreSpares();
  restoreLocks();
}

void TypingKeyboard::giveBackLeftOvers() {
  const BorrowedKeys::Record left = borrowed_.claim();
  if (left.isEmpty()) return;
  giveBack(left.spares);
  turnLocksOn(left.locks);
  record();
  server_.flush();
}

void TypingKeyboard::record(const Assignment& more) const {
  BorrowedKeys::Record record{.locks = locksTurnedOff_, .spares = flattened(assigned_)};
  const Spares added = flattened(more);
  record.spares.insert(record.spares.end(), added.begin(), added.end());
  borrowed_.write(record);
}

void TypingKeyboard::send(std::uint8_t code, bool isDown) {
  const std::uint8_t event = isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
  xcb_test_fake_input(server_.get(), event, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
  ownKeys_.sent(code, isDown);
}

void TypingKeyboard::releaseHeldKeys() {
  const auto held = server_.reply<xcb_query_keymap_reply_t>(xcb_query_keymap(server_.get()));
  if (!held) return;
  for (unsigned code = 0; code < 8 * sizeof held->keys; ++code) {
    if ((held->keys[code / 8] >> (code % 8) & 1) == 0) continue;
    send(static_cast<std::uint8_t>(code), false);
  }
}

void TypingKeyboard::turnLocksOff() {
  const auto state = server_.reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(server_.get(), XCB_XKB_ID_USE_CORE_KBD));
  if (!state) return;
  const auto locked = static_cast<std::uint8_t>(state->lockedMods & kLocks);
  if (locked == 0 && state->latchedMods == 0) return;
  locksTurnedOff_ |= locked;
  record();
  xcb_xkb_latch_lock_state(server_.get(), XCB_XKB_ID_USE_CORE_KBD, locked, 0, 0, 0, kAllModifiers,
                           0, 0);
}

void TypingKeyboard::releaseAll() {
  releaseHeldKeys();
  turnLocksOff();
}

void TypingKeyboard::press(const KeyStroke& stroke, const KeyTable& table) {
  if (stroke.shift) send(table.shiftCode, true);
  if (stroke.level3) send(table.level3Code, true);
  send(stroke.code, true);
  send(stroke.code, false);
  if (stroke.level3) send(table.level3Code, false);
  if (stroke.shift) send(table.shiftCode, false);
}

void TypingKeyboard::restoreLocks() {
  const auto locks = std::exchange(locksTurnedOff_, std::uint8_t{0});
  if (locks == 0) return;
  turnLocksOn(locks);
  record();
  server_.flush();
}

void TypingKeyboard::turnLocksOn(std::uint8_t locks) {
  xcb_xkb_latch_lock_state(server_.get(), XCB_XKB_ID_USE_CORE_KBD, locks, locks, 0, 0, 0, 0, 0);
}

void TypingKeyboard::map(std::uint8_t code, const Levels& levels) {
  xcb_change_keyboard_mapping(server_.get(), 1, code, static_cast<std::uint8_t>(levels.size()),
                              levels.data());
}

void TypingKeyboard::assignSpares(const std::map<std::uint8_t, SpareCharacters>& characters) {
  Assignment changes;
  for (const auto& [code, wanted] : characters) {
    const Levels levels = {xkb_utf32_to_keysym(wanted.plain), xkb_utf32_to_keysym(wanted.shifted)};
    // Each change makes every program on the desktop read its keymap again.
    const auto old = assigned_.find(code);
    if (old == assigned_.end() || old->second != levels) changes.emplace(code, levels);
  }
  if (changes.empty()) return;
  record(changes);  // with the old characters, which the keys still write
  for (const auto& [code, levels] : changes) {
    map(code, levels);
    assigned_[code] = levels;
  }
  record();
  server_.flush();
}

void TypingKeyboard::giveBack(const Spares& spares) {
  std::map<std::uint8_t, std::set<xcb_keysym_t>> ours;
  for (const auto& [code, keysym] : spares) ours[code].insert(keysym);
  std::map<std::uint8_t, xcb_get_keyboard_mapping_cookie_t> requests;
  for (const auto& key : ours) {
    requests.emplace(key.first, xcb_get_keyboard_mapping(server_.get(), key.first, 1));
  }
  for (const auto& [code, request] : requests) {
    const auto current = server_.reply<xcb_get_keyboard_mapping_reply_t>(request);
    if (!current || writesOnly(*current, ours[code])) map(code, {XCB_NO_SYMBOL, XCB_NO_SYMBOL});
  }
}

void TypingKeyboard::restoreSpares() {
  if (assigned_.empty()) return;
  giveBack(flattened(assigned_));
  assigned_.clear();
  record();
  server_.flush();
}

}  // namespace voxtrel::quillback
