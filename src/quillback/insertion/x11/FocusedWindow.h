#pragma once

#include "common/x11/XConnection.h"

namespace voxtrel::quillback {

/// Which window gets the keys: the one with the focus, inside the one that the window manager calls
/// active.
struct FocusedWindow {
  xcb_window_t focus = XCB_NONE;
  xcb_window_t active = XCB_NONE;

  /// False where keys reach nobody.
  bool exists() const { return focus != XCB_NONE; }
  bool operator==(const FocusedWindow&) const = default;
};

/// Asks the server; `activeAtom` is that of _NET_ACTIVE_WINDOW.
FocusedWindow focusedWindow(const XConnection& server, xcb_atom_t activeAtom);

}  // namespace voxtrel::quillback
