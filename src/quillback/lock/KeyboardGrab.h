#pragma once

#include <memory>

#include "common/x11/XConnection.h"
#include "quillback/ports/ScreenLock.h"

namespace voxtrel::quillback {

/// Whether another X11 client has the keyboard for itself, as lock screens do. A client that has bound a
/// key gets the keyboard while that key is down; that does not count, because it may be the
/// push-to-talk key. Nor does a grab that something else on the screen explains (isGrabHarmless).
/// Thread: the loop's.  Owns: a connection to the server with a window that is never shown.
/// Fails by: not being locked.
class KeyboardGrab final : public ScreenLock {
 public:
  KeyboardGrab();

  /// Blocks for a round trip, for more of them while the keyboard is grabbed.
  bool isLocked() override;

 private:
  void connect();
  [[nodiscard]] bool isGrabbed() const;
  [[nodiscard]] bool isBoundKeyDown() const;
  [[nodiscard]] bool isBound(xcb_keycode_t key) const;

  std::unique_ptr<XConnection> server_;
  xcb_window_t window_ = XCB_NONE;
};

}  // namespace voxtrel::quillback
