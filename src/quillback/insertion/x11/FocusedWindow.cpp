#include "quillback/insertion/x11/FocusedWindow.h"

#include <cstring>

namespace voxtrel::quillback {

FocusedWindow focusedWindow(const XConnection& server, xcb_atom_t activeAtom) {
  FocusedWindow window;
  const auto focus = server.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(server.get()));
  if (focus) window.focus = focus->focus;
  const auto active = server.reply<xcb_get_property_reply_t>(
      xcb_get_property(server.get(), 0, server.root(), activeAtom, XCB_ATOM_WINDOW, 0, 1));
  if (active && active->format == 32 && active->value_len == 1) {
    std::memcpy(&window.active, xcb_get_property_value(active.get()), sizeof window.active);
  }
  return window;
}

}  // namespace voxtrel::quillback
