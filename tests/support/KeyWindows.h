#pragma once

#include <array>
#include <memory>
#include <stdexcept>

#include "common/x11/XConnection.h"

namespace voxtrel::quillback::test {

/// Two windows that count the keys which they get.
/// Thread: one.  Owns: a connection to the server with the windows.
class KeyWindows {
 public:
  KeyWindows() : server_(XConnection::open()) {
    if (!server_) throw std::runtime_error("no X server");
    for (xcb_window_t& window : windows_) {
      constexpr std::uint16_t kSide = 40;
      const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS;
      window = xcb_generate_id(server_->get());
      xcb_create_window(server_->get(), XCB_COPY_FROM_PARENT, window, server_->root(), 0, 0, kSide,
                        kSide, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                        XCB_CW_EVENT_MASK, &events);
      xcb_map_window(server_->get(), window);
    }
    focus(0);
  }

  void focus(std::size_t which) {
    xcb_set_input_focus(server_->get(), XCB_INPUT_FOCUS_PARENT, windows_.at(which),
                        XCB_CURRENT_TIME);
    sync();
  }

  /// How many keys other than Shift the window has got since the last reset.
  std::size_t keys(std::size_t which) {
    sync();
    while (const auto event = server_->nextEvent()) {
      if (eventType(*event) != XCB_KEY_PRESS) continue;
      const auto& press = eventAs<xcb_key_press_event_t>(*event);
      if (press.detail == kLeftShift || press.detail == kRightShift) continue;
      ++counts_[press.event == windows_[0] ? 0 : 1];
    }
    return counts_.at(which);
  }

  void reset() {
    keys(0);
    counts_ = {};
    focus(0);
  }

 private:
  static constexpr xcb_keycode_t kLeftShift = 50;
  static constexpr xcb_keycode_t kRightShift = 62;

  void sync() { server_->reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(server_->get())); }

  std::unique_ptr<XConnection> server_;
  std::array<xcb_window_t, 2> windows_{};
  std::array<std::size_t, 2> counts_{};
};

}  // namespace voxtrel::quillback::test
