#include "common/wayland/WaylandConnection.h"

#include <cstdlib>

namespace voxtrel {

std::unique_ptr<WaylandConnection> WaylandConnection::open() {
  const char* const name = std::getenv("WAYLAND_DISPLAY");
  // Without a name, the library would take the user's first compositor, of whatever session.
  if (name == nullptr || *name == '\0') return nullptr;
  wl_display* const display = wl_display_connect(name);
  if (display == nullptr) return nullptr;
  return std::unique_ptr<WaylandConnection>(new WaylandConnection(display));
}

void WaylandConnection::dispatch() const {
  while (wl_display_prepare_read(get()) != 0) {
    if (wl_display_dispatch_pending(get()) < 0) return;
  }
  wl_display_flush(get());
  // Takes what is there; with one reading thread it does not wait for more.
  if (wl_display_read_events(get()) < 0) return;
  wl_display_dispatch_pending(get());
  wl_display_flush(get());
}

}  // namespace voxtrel
