#pragma once

#include <optional>

#include "common/x11/XConnection.h"

namespace voxtrel::quillback {

/// Which window gets the keys: the one with the focus, inside the one that the window manager calls
/// active. Where the focus follows the pointer, also the window under it.
struct FocusedWindow {
  xcb_window_t focus = XCB_NONE;
  xcb_window_t active = XCB_NONE;
  xcb_window_t pointed = XCB_NONE;

  /// False if no window gets them.
  bool exists() const { return focus != XCB_NONE; }
  bool operator==(const FocusedWindow&) const = default;
};

/// Asks the server; nothing if it does not reply. `activeAtom` is _NET_ACTIVE_WINDOW's.
std::optional<FocusedWindow> focusedWindow(const XConnection& server, xcb_atom_t activeAtom);

/// Asks a client whether it has read its events so far, by the ping with which window managers detect
/// hung clients.
/// Thread: the loop's.  Borrows: XConnection (must outlive this).
/// Fails by: no ping is pending after `send` to a client without ping support.
class WindowPing {
 public:
  explicit WindowPing(const XConnection& server);

  /// Pings the client of `window`, which may be inside the one that supports pings.
  void send(xcb_window_t window);
  /// Whether a reply is still to come.
  bool isPending() const { return pinged_ != XCB_NONE; }
  /// True if `event` is that reply; then none is pending any more.
  [[nodiscard]] bool isPingReply(const xcb_generic_event_t& event);
  /// Stops waiting for a reply.
  void cancel();

 private:
  bool supportsPings(xcb_window_t window) const;
  /// The window or its nearest ancestor with ping support; XCB_NONE if there is none.
  xcb_window_t pingable(xcb_window_t window) const;
  void listen(bool isListening);

  const XConnection& server_;
  xcb_atom_t protocols_;
  xcb_atom_t ping_;
  std::uint32_t id_ = 0;
  xcb_window_t pinged_ = XCB_NONE;
};

}  // namespace voxtrel::quillback
