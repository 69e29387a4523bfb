#pragma once

#include <xcb/xcb.h>

#include <QImage>
#include <memory>

class QWindow;

namespace voxtrel {

class XServer;

/// Copies small pictures into a window. Qt's backing store waits for the server's reply before it
/// reuses its shared pixels, which at 60 frames a second costs more than the painting. This never
/// waits.
/// Thread: the main thread.  Owns: a graphics context.  Borrows: the connection.
/// Fails by: `make` returns null.
class XcbSurface {
 public:
  /// Null if the server's pixel format differs from QImage's.
  static std::unique_ptr<XcbSurface> make(const XServer& server, const QWindow& window);

  XcbSurface(const XcbSurface&) = delete;
  XcbSurface& operator=(const XcbSurface&) = delete;
  ~XcbSurface();

  /// Sends the rows of `picture` that `part` touches. It has 32-bit pixels with premultiplied alpha.
  void put(const QImage& picture, const QRect& part) const;

 private:
  XcbSurface(xcb_connection_t* connection, xcb_window_t window, std::uint8_t depth);

  xcb_connection_t* connection_;
  xcb_window_t window_;
  std::uint8_t depth_;
  xcb_gcontext_t context_;
};

}  // namespace voxtrel
