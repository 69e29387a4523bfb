#pragma once

#include <wayland-client.h>

#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

namespace voxtrel {

/// What a compositor offers, told once.
/// Thread: one.  Borrows: the display (must outlive this).
class WaylandGlobals {
 public:
  using OnGlobal =
      std::function<void(wl_registry* registry, std::uint32_t name, std::string_view interface)>;

  /// Returns after `onGlobal` was called for each interface.
  WaylandGlobals(wl_display* display, OnGlobal onGlobal)
      : onGlobal_(std::move(onGlobal)), registry_(wl_display_get_registry(display)) {
    wl_registry_add_listener(registry_, &kListener, this);
    wl_display_roundtrip(display);
  }
  WaylandGlobals(const WaylandGlobals&) = delete;
  WaylandGlobals& operator=(const WaylandGlobals&) = delete;
  ~WaylandGlobals() { wl_registry_destroy(registry_); }

 private:
  static void tell(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                   std::uint32_t /*version*/) {
    static_cast<WaylandGlobals*>(data)->onGlobal_(registry, name, interface);
  }
  static void forget(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}

  static constexpr wl_registry_listener kListener{.global = tell, .global_remove = forget};
  OnGlobal onGlobal_;
  wl_registry* registry_;
};

}  // namespace voxtrel
