#pragma once

#include "common/x11/XConnection.h"
#include "quillback/insertion/x11/KeyTable.h"
#include "quillback/keys/OwnKeys.h"

namespace voxtrel::quillback {

/// Presses keys through the server. Each stroke lets go of everything it pressed in the same breath,
/// so that no key is ever left pressed.
/// Thread: the loop's.  Borrows: XConnection, OwnKeys (must outlive this).
class TypingKeys {
 public:
  TypingKeys(const XConnection& server, OwnKeys& ownKeys) : server_(server), ownKeys_(ownKeys) {}
  TypingKeys(const TypingKeys&) = delete;
  TypingKeys& operator=(const TypingKeys&) = delete;
  ~TypingKeys() { restoreLocks(); }

  /// Lets go of all keys that are held, which would change what the next strokes write, and takes
  /// Caps Lock and its like off. A key let go is not pressed again, as its user may have let go of it
  /// meanwhile: it would stay pressed.
  void clearTheWay();
  void press(const KeyStroke& stroke, const KeyTable& table);
  /// Caps Lock and its like are as before.
  void restoreLocks();

 private:
  void letGoOfHeldKeys();
  void takeLocksOff();
  void send(std::uint8_t code, bool isDown);

  const XConnection& server_;
  OwnKeys& ownKeys_;
  std::uint8_t locksTakenOff_ = 0;
};

}  // namespace voxtrel::quillback
