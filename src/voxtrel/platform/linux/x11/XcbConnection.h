#pragma once

#include <xcb/xcb.h>

#include <QRect>
#include <optional>
#include <vector>

namespace voxtrel {

/// What Qt does not say about the X server that the application is connected to. All sizes and
/// places are in the server's own pixels.
/// Thread: the main thread.  Borrows: Qt's connection.
/// Fails by: empty answers, also where the application is not connected to an X server.
class XcbConnection {
 public:
  XcbConnection();

  explicit operator bool() const { return connection_ != nullptr; }

  /// Where the window with the keyboard's focus is, without its frame. Waits for the server twice.
  std::optional<QRect> activeWindow() const;

  /// Asks whether there is a compositor, so that windows may be see-through; the answer is to be
  /// fetched once, later, when it will have arrived.
  xcb_get_selection_owner_cookie_t askForCompositor() const;
  bool hasCompositor(xcb_get_selection_owner_cookie_t question) const;

  /// Cuts the window to these rectangles.
  void setShape(xcb_window_t window, const std::vector<QRect>& rectangles) const;

  /// Sends what has been asked for.
  void flush() const;

  xcb_connection_t* native() const { return connection_; }

 private:
  std::optional<QRect> placeOf(xcb_window_t window) const;

  xcb_connection_t* connection_ = nullptr;
  xcb_window_t root_ = XCB_NONE;
  xcb_atom_t activeWindowAtom_ = XCB_ATOM_NONE;
  xcb_atom_t compositorAtom_ = XCB_ATOM_NONE;
};

}  // namespace voxtrel
