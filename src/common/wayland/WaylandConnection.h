#pragma once

#include <wayland-client.h>

#include <memory>

namespace voxtrel {

/// A connection to the Wayland compositor, next to a toolkit's own. A compositor that ends or hangs
/// breaks the connection, not the program: nothing here waits for it.
/// Thread: one.  Owns: the connection; objects made over it must be destroyed before.
/// Fails by: `isBroken`, for good.
class WaylandConnection {
 public:
  /// Null if WAYLAND_DISPLAY names no compositor.
  [[nodiscard]] static std::unique_ptr<WaylandConnection> open();

  wl_display* get() const { return display_.get(); }
  /// Readable when `dispatch` has something to do.
  int descriptor() const { return wl_display_get_fd(get()); }
  bool isBroken() const { return wl_display_get_error(get()) != 0; }

  /// Calls the listeners for the events that have arrived, and sends the requests that they make.
  void dispatch() const;
  /// Sends what was requested.
  void flush() const { wl_display_flush(get()); }

 private:
  struct Disconnect {
    void operator()(wl_display* display) const { wl_display_disconnect(display); }
  };

  explicit WaylandConnection(wl_display* display) : display_(display) {}

  std::unique_ptr<wl_display, Disconnect> display_;
};

}  // namespace voxtrel
