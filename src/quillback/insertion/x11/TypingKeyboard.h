#pragma once

#include <array>
#include <cstdint>
#include <map>

#include "common/x11/XConnection.h"
#include "quillback/insertion/x11/BorrowedKeys.h"
#include "quillback/insertion/x11/KeyTable.h"
#include "quillback/insertion/x11/TypingPlan.h"
#include "quillback/keys/OwnKeys.h"

namespace voxtrel::quillback {

/// The server's keyboard while we type on it. Each stroke's presses and releases are sent together, so
/// no key stays pressed. Destroying this restores locks and spare keys. A record on the server says what
/// was changed, so that after a kill the next start restores it.
/// Thread: the loop's.  Borrows: XConnection, OwnKeys (must outlive this).
class TypingKeyboard {
 public:
  TypingKeyboard(const XConnection& server, OwnKeys& ownKeys)
      : server_(server), ownKeys_(ownKeys), borrowed_(server) {}
  TypingKeyboard(const TypingKeyboard&) = delete;
  TypingKeyboard& operator=(const TypingKeyboard&) = delete;
  ~TypingKeyboard();

  /// Restores what a typer that was killed has left. A repetition costs little.
  void giveBackLeftOvers();

  /// Releases all held keys and turns off Caps Lock and the like, which would change what the next
  /// strokes write. A released key is not pressed again: if the user has released it meanwhile, it
  /// would stay pressed.
  void releaseAll();
  void press(const KeyStroke& stroke, const KeyTable& table);
  /// Turns on again what releaseAll turned off.
  void restoreLocks();

  /// Makes these keys write these characters.
  void assignSpares(const std::map<std::uint8_t, SpareCharacters>& characters);
  /// Makes the spare keys do nothing again, except those that a new keymap uses.
  void restoreSpares();
  bool hasAssignedSpares() const { return !assigned_.empty(); }

 private:
  using Spares = std::vector<std::pair<std::uint8_t, xcb_keysym_t>>;
  /// Without and with Shift.
  using Levels = std::array<xcb_keysym_t, 2>;
  using Assignment = std::map<std::uint8_t, Levels>;

  void releaseHeldKeys();
  void turnLocksOff();
  void turnLocksOn(std::uint8_t locks);
  /// Makes those keys do nothing that still write what `spares` says.
  void giveBack(const Spares& spares);
  /// Records what is changed now, and `more`.
  void record(const Assignment& more = {}) const;
  void send(std::uint8_t code, bool isDown);
  void map(std::uint8_t code, const Levels& levels);

  const XConnection& server_;
  OwnKeys& ownKeys_;
  BorrowedKeys borrowed_;
  std::uint8_t locksTurnedOff_ = 0;
  Assignment assigned_;
};

}  // namespace voxtrel::quillback
