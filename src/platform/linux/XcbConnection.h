#pragma once

#include <xcb/xcb.h>

#include <QRect>
#include <QString>
#include <optional>
#include <string_view>
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

  /// Where the window with the keyboard's focus is, its frame not counted.
  std::optional<QRect> activeWindow() const;

  /// Whether windows may be see-through at this moment.
  bool hasCompositor() const;

  /// Cuts the window to these rectangles.
  void setShape(xcb_window_t window, const std::vector<QRect>& rectangles) const;

 private:
  xcb_atom_t atom(std::string_view name) const;
  std::optional<xcb_window_t> activeWindowId() const;

  xcb_connection_t* connection_ = nullptr;
  xcb_window_t root_ = XCB_NONE;
};

}  // namespace voxtrel
