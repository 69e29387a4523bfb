// A minimal program that prints a line for each press of a key under X11, whatever has the focus.

#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdlib>
#include <string_view>

namespace {

constexpr std::string_view kLine = "Recording...\n";
constexpr unsigned kRightSuper = 134;

struct Mask {
  xcb_input_event_mask_t head;
  std::uint32_t events;
};

}  // namespace

int main() {
  xcb_connection_t* server = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(server) != 0) return 1;
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
  std::free(
      xcb_input_xi_query_version_reply(server, xcb_input_xi_query_version(server, 2, 2), nullptr));
  const Mask mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS};
  xcb_input_xi_select_events(server, root, 1, &mask.head);
  xcb_flush(server);
  if (::write(STDOUT_FILENO, "Ready.\n", 7) != 7) return 1;
  while (xcb_generic_event_t* event = xcb_wait_for_event(server)) {
    const auto* key = reinterpret_cast<xcb_input_raw_key_press_event_t*>(event);
    if (key->detail == kRightSuper && ::write(STDOUT_FILENO, kLine.data(), kLine.size()) < 0) {
      return 1;
    }
    std::free(event);
  }
  return 0;
}
