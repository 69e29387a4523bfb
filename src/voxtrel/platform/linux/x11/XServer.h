#pragma once

#include <QByteArray>
#include <QRect>
#include <memory>
#include <optional>
#include <vector>

#include "common/x11/XConnection.h"

namespace voxtrel {

/// Qt's connection to the X server, borrowed; null if the application is not connected to one.
/// Thread: the main thread.
std::unique_ptr<XConnection> qtXConnection();

/// Tells the window manager that `window` comes forward for the start with this id. Does nothing without
/// an X server.
/// Thread: the main thread.
void setStartupId(xcb_window_t window, const QByteArray& startupId);

/// Whether the X server has XInput 2, whose raw events show a key whatever window has the focus. Asked
/// over a separate connection, because Qt has already agreed on a version on its own.
/// `display`: null for $DISPLAY.
/// Thread: any; blocks until the server replies.  Fails by: false.
bool offersXInput2(const char* display = nullptr);

/// What the overlay needs from the X server and Qt does not offer. Sizes and positions are in the
/// server's pixels.
/// Thread: the main thread.  Borrows: Qt's connection.
/// Fails by: empty results, also without an X server.
class XServer {
 public:
  XServer();

  explicit operator bool() const { return connection_ != nullptr; }

  /// Position and size of the window with the focus, without its frame. Blocks for two round trips.
  std::optional<QRect> activeWindow() const;

  /// Asks whether a compositor runs, so that windows can be translucent. The reply must be fetched
  /// exactly once; later, it has already arrived and does not block.
  xcb_get_selection_owner_cookie_t askForCompositor() const;
  bool hasCompositor(xcb_get_selection_owner_cookie_t cookie) const;

  /// Limits the window to these rectangles.
  void setShape(xcb_window_t window, const std::vector<QRect>& rectangles) const;
  void flush() const;

  xcb_connection_t* native() const { return connection_->get(); }

 private:
  std::optional<QRect> frameOf(xcb_window_t window) const;

  std::unique_ptr<XConnection> connection_;
  xcb_atom_t activeWindowAtom_ = XCB_ATOM_NONE;
  xcb_atom_t compositorAtom_ = XCB_ATOM_NONE;
};

}  // namespace voxtrel
