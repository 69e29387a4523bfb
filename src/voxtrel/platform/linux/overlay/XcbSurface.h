#pragma once

#include <xcb/xcb.h>

#include <QImage>
#include <memory>

class QWindow;

namespace voxtrel {

class XServer;

/// Puts small pictures into a window. Qt's own way waits for the server's answer before it paints the
/// same pixels again, which at 60 frames a second costs more than the painting; this one copies the
/// pixels and never waits.
/// Thread: the main thread.  Owns: a graphics context.  Borrows: the connection.
class XcbSurface {
 public:
  /// Null if the server does not keep pixels as we do.
  static std::unique_ptr<XcbSurface> make(const XServer& connection, const QWindow& window);

  XcbSurface(const XcbSurface&) = delete;
  XcbSurface& operator=(const XcbSurface&) = delete;
  ~XcbSurface();

  /// `picture` as 32-bit pixels with multiplied alpha.
  void put(const QImage& picture) const;

 private:
  XcbSurface(xcb_connection_t* connection, xcb_window_t window, std::uint8_t depth);

  xcb_connection_t* connection_;
  xcb_window_t window_;
  std::uint8_t depth_;
  xcb_gcontext_t context_;
};

}  // namespace voxtrel
