#include "quillback/insertion/x11/FocusedWindow.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace voxtrel::quillback {
namespace {

constexpr int kMaxAncestors = 16;
constexpr std::uint32_t kMaxProtocols = 32;

}  // namespace

std::optional<FocusedWindow> focusedWindow(const XConnection& server, xcb_atom_t activeAtom) {
  FocusedWindow window;
  const auto activeRequest =
      xcb_get_property(server.get(), 0, server.root(), activeAtom, XCB_ATOM_WINDOW, 0, 1);
  const auto focusRequest = xcb_get_input_focus(server.get());
  const auto active = server.reply<xcb_get_property_reply_t>(activeRequest);
  const auto focus = server.reply<xcb_get_input_focus_reply_t>(focusRequest);
  if (!focus) return std::nullopt;
  window.focus = focus->focus;
  if (active && active->format == 32 && active->value_len == 1) {
    std::memcpy(&window.active, xcb_get_property_value(active.get()), sizeof window.active);
  }
  if (window.focus == XCB_INPUT_FOCUS_POINTER_ROOT) {
    const auto pointer =
        server.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(server.get(), server.root()));
    if (pointer) window.pointed = pointer->child;
  }
  return window;
}

WindowPing::WindowPing(const XConnection& server)
    : server_(server),
      protocols_(server.atom("WM_PROTOCOLS")),
      ping_(server.atom("_NET_WM_PING")) {}

bool WindowPing::supportsPings(xcb_window_t window) const {
  const auto reply = server_.reply<xcb_get_property_reply_t>(
      xcb_get_property(server_.get(), 0, window, protocols_, XCB_ATOM_ATOM, 0, kMaxProtocols));
  if (!reply || reply->format != 32) return false;
  const std::span protocols(static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get())),
                            reply->value_len);
  return std::ranges::find(protocols, ping_) != protocols.end();
}

xcb_window_t WindowPing::pingable(xcb_window_t window) const {
  for (int i = 0; i < kMaxAncestors && window != XCB_NONE && window != server_.root(); ++i) {
    if (supportsPings(window)) return window;
    const auto tree = server_.reply<xcb_query_tree_reply_t>(xcb_query_tree(server_.get(), window));
    window = tree ? tree->parent : static_cast<xcb_window_t>(XCB_NONE);
  }
  return XCB_NONE;
}

void WindowPing::listen(bool isListening) {
  // Clients should reply with the second mask; Qt replies with the first.
  const std::uint32_t events =
      isListening ? XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY
                  : XCB_EVENT_MASK_NO_EVENT;
  xcb_change_window_attributes(server_.get(), server_.root(), XCB_CW_EVENT_MASK, &events);
}

void WindowPing::send(xcb_window_t window) {
  cancel();
  pinged_ = pingable(window);
  if (!isPending()) return;
  listen(true);
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = pinged_;
  message.type = protocols_;
  message.data.data32[0] = ping_;
  // Window managers put a time here, and none uses one as early as our small ids.
  message.data.data32[1] = ++id_;
  message.data.data32[2] = pinged_;
  static_assert(sizeof message == 32);
  xcb_send_event(server_.get(), 0, pinged_, XCB_EVENT_MASK_NO_EVENT,
                 static_cast<const char*>(static_cast<const void*>(&message)));
  server_.flush();
}

bool WindowPing::isPingReply(const xcb_generic_event_t& event) {
  if (!isPending() || eventType(event) != XCB_CLIENT_MESSAGE) return false;
  const auto& reply = eventAs<xcb_client_message_event_t>(event);
  if (reply.type != protocols_ || reply.data.data32[0] != ping_) return false;
  if (reply.data.data32[1] != id_ || reply.data.data32[2] != pinged_) return false;
  cancel();
  return true;
}

void WindowPing::cancel() {
  if (!isPending()) return;
  pinged_ = XCB_NONE;
  listen(false);
  server_.flush();
}

}  // namespace voxtrel::quillback
