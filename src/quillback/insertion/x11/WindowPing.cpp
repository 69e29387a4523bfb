#include "quillback/insertion/x11/WindowPing.h"

#include <algorithm>
#include <span>

namespace voxtrel::quillback {
namespace {

constexpr int kMostWindowsAround = 16;
constexpr std::uint32_t kMostProtocols = 32;

}  // namespace

WindowPing::WindowPing(const XConnection& server)
    : server_(server),
      protocols_(server.atom("WM_PROTOCOLS")),
      ping_(server.atom("_NET_WM_PING")) {}

bool WindowPing::understandsPings(xcb_window_t window) const {
  const auto reply = server_.reply<xcb_get_property_reply_t>(
      xcb_get_property(server_.get(), 0, window, protocols_, XCB_ATOM_ATOM, 0, kMostProtocols));
  if (!reply || reply->format != 32) return false;
  const std::span protocols(static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get())),
                            reply->value_len);
  return std::find(protocols.begin(), protocols.end(), ping_) != protocols.end();
}

xcb_window_t WindowPing::pingable(xcb_window_t window) const {
  for (int i = 0; i < kMostWindowsAround && window != XCB_NONE && window != server_.root(); ++i) {
    if (understandsPings(window)) return window;
    const auto tree = server_.reply<xcb_query_tree_reply_t>(xcb_query_tree(server_.get(), window));
    window = tree ? tree->parent : static_cast<xcb_window_t>(XCB_NONE);
  }
  return XCB_NONE;
}

void WindowPing::listen(bool isListening) {
  // Signs are meant for the second; Qt sends them to the first.
  const std::uint32_t events =
      isListening ? XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY
                  : XCB_EVENT_MASK_NO_EVENT;
  xcb_change_window_attributes(server_.get(), server_.root(), XCB_CW_EVENT_MASK, &events);
}

bool WindowPing::ask(xcb_window_t window) {
  forget();
  asked_ = pingable(window);
  if (asked_ == XCB_NONE) return false;
  listen(true);
  xcb_client_message_event_t question{};
  question.response_type = XCB_CLIENT_MESSAGE;
  question.format = 32;
  question.window = asked_;
  question.type = protocols_;
  question.data.data32[0] = ping_;
  question.data.data32[1] = ++number_;  // a time for window managers, which know none as early
  question.data.data32[2] = asked_;
  static_assert(sizeof question == 32);
  xcb_send_event(server_.get(), 0, asked_, XCB_EVENT_MASK_NO_EVENT,
                 static_cast<const char*>(static_cast<const void*>(&question)));
  server_.flush();
  return true;
}

bool WindowPing::isSign(const xcb_generic_event_t& event) {
  constexpr int kSentBySomebody = 0x80;
  if (asked_ == XCB_NONE || (event.response_type & ~kSentBySomebody) != XCB_CLIENT_MESSAGE) {
    return false;
  }
  const auto& sign =
      *static_cast<const xcb_client_message_event_t*>(static_cast<const void*>(&event));
  if (sign.type != protocols_ || sign.data.data32[0] != ping_) return false;
  if (sign.data.data32[1] != number_ || sign.data.data32[2] != asked_) return false;
  forget();
  return true;
}

void WindowPing::forget() {
  if (asked_ == XCB_NONE) return;
  asked_ = XCB_NONE;
  listen(false);
  server_.flush();
}

}  // namespace voxtrel::quillback
