// A mouse for a compositor without devices. It stays plugged in until its standard input ends, and
// carries out one line at a time:
//   WIDTH HEIGHT X Y            moves to this point of a screen of that size
//   WIDTH HEIGHT X Y BUTTON     the same, then presses and releases a button (272 left, 273 right)
// After each line it prints "done".

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

#include "common/wayland/WaylandConnection.h"
#include "support/WaylandGlobals.h"
#include "wlr-virtual-pointer-v1-client.h"

namespace {

using namespace std::chrono_literals;

/// The compositor acts on a button at the place that it has drawn the pointer at.
constexpr auto kHandSpeed = 30ms;

std::uint32_t nowMs() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

void pause(wl_display* display) {
  wl_display_roundtrip(display);
  std::this_thread::sleep_for(kHandSpeed);
}

void carryOut(const std::string& line, wl_display* display, zwlr_virtual_pointer_v1* pointer) {
  std::istringstream words(line);
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t button = 0;
  words >> width >> height >> x >> y;
  // A pointer that has moved within a window is in it, also for the X server.
  for (const std::uint32_t column : {x - 1, x}) {
    zwlr_virtual_pointer_v1_motion_absolute(pointer, nowMs(), column, y, width, height);
    zwlr_virtual_pointer_v1_frame(pointer);
    pause(display);
  }
  if (!(words >> button)) return;
  for (const std::uint32_t state : {1U, 0U}) {
    zwlr_virtual_pointer_v1_button(pointer, nowMs(), button, state);
    zwlr_virtual_pointer_v1_frame(pointer);
    pause(display);
  }
}

}  // namespace

int main() {
  const auto connection = voxtrel::WaylandConnection::open();
  if (!connection) return 1;
  zwlr_virtual_pointer_manager_v1* manager = nullptr;
  const voxtrel::WaylandGlobals globals(connection->get(), [&manager](wl_registry* registry,
                                                                      std::uint32_t name,
                                                                      std::string_view interface) {
    const wl_interface& wanted = zwlr_virtual_pointer_manager_v1_interface;
    if (interface != wanted.name) return;
    manager =
        static_cast<zwlr_virtual_pointer_manager_v1*>(wl_registry_bind(registry, name, &wanted, 1));
  });
  if (manager == nullptr) return 2;
  auto* const pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, nullptr);
  wl_display_roundtrip(connection->get());
  std::string line;
  while (std::getline(std::cin, line)) {
    carryOut(line, connection->get(), pointer);
    std::cout << "done" << std::endl;
  }
  zwlr_virtual_pointer_v1_destroy(pointer);
  zwlr_virtual_pointer_manager_v1_destroy(manager);
}
