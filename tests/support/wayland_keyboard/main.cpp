// A keyboard for a compositor without devices. It stays plugged in until its standard input ends. Each line
// is a layout and its variant ("us dvorak"), or a layout alone; the keyboard gets it, and "done" is printed.

#include <sys/mman.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "common/posix/FileDescriptor.h"
#include "common/posix/WriteAll.h"
#include "common/wayland/WaylandConnection.h"
#include "support/WaylandGlobals.h"
#include "virtual-keyboard-v1-client.h"

namespace {

/// The layout's keymap as text; empty if there is no such layout.
std::string keymapText(const std::string& layout, const std::string& variant) {
  const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
      xkb_context_new(XKB_CONTEXT_NO_FLAGS), &xkb_context_unref);
  const xkb_rule_names names{.rules = "evdev",
                             .model = "pc105",
                             .layout = layout.c_str(),
                             .variant = variant.c_str(),
                             .options = ""};
  const std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> keymap(
      xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS),
      &xkb_keymap_unref);
  if (!keymap) return {};
  const std::unique_ptr<char, decltype(&std::free)> text(
      xkb_keymap_get_as_string(keymap.get(), XKB_KEYMAP_FORMAT_TEXT_V1), &std::free);
  return text.get();
}

bool give(zwp_virtual_keyboard_v1* keyboard, const std::string& text) {
  const voxtrel::FileDescriptor file(::memfd_create("keymap", MFD_CLOEXEC));
  const std::size_t size = text.size() + 1;  // with the zero byte that ends it
  if (text.empty() || !voxtrel::writeAll(file.get(), {text.c_str(), size})) return false;
  zwp_virtual_keyboard_v1_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.get(),
                                 static_cast<std::uint32_t>(size));
  return true;
}

}  // namespace

int main() {
  const auto connection = voxtrel::WaylandConnection::open();
  if (!connection) return 1;
  wl_seat* seat = nullptr;
  zwp_virtual_keyboard_manager_v1* manager = nullptr;
  const voxtrel::WaylandGlobals globals(
      connection->get(),
      [&](wl_registry* registry, std::uint32_t name, std::string_view interface) {
        const wl_interface& wanted = zwp_virtual_keyboard_manager_v1_interface;
        if (interface == wl_seat_interface.name) {
          seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        } else if (interface == wanted.name) {
          manager = static_cast<zwp_virtual_keyboard_manager_v1*>(
              wl_registry_bind(registry, name, &wanted, 1));
        }
      });
  if (seat == nullptr || manager == nullptr) return 2;
  auto* const keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager, seat);
  std::string line;
  while (std::getline(std::cin, line)) {
    std::istringstream words(line);
    std::string layout;
    std::string variant;
    words >> layout >> variant;
    if (!give(keyboard, keymapText(layout, variant))) return 3;
    wl_display_roundtrip(connection->get());
    std::cout << "done" << std::endl;
  }
  zwp_virtual_keyboard_v1_destroy(keyboard);
  // Its manager has no request to destroy it.
  wl_proxy_destroy(static_cast<wl_proxy*>(static_cast<void*>(manager)));
  wl_seat_destroy(seat);
}
