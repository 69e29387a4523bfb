#include "quillback/insertion/clipboard/X11Clipboard.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace voxtrel::quillback {
namespace {

/// The server's clock wraps around.
bool isBefore(xcb_timestamp_t first, xcb_timestamp_t second) {
  return static_cast<std::int32_t>(first - second) < 0;
}

xcb_window_t makeWindow(const XConnection& server) {
  const xcb_window_t window = xcb_generate_id(server.get());
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(server.get(), XCB_COPY_FROM_PARENT, window, server.root(), -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  return window;
}

}  // namespace

std::unique_ptr<X11Clipboard> X11Clipboard::open(Loop& loop) {
  auto server = XConnection::open();
  if (!server) return nullptr;
  std::unique_ptr<X11Clipboard> clipboard(new X11Clipboard(std::move(server)));
  clipboard->watch_ = loop.watch(clipboard->server_->descriptor(),
                                 [self = clipboard.get()] { self->handleEvents(); });
  return clipboard;
}

X11Clipboard::X11Clipboard(std::unique_ptr<XConnection> server)
    : server_(std::move(server)), atoms_(atomsOf(*server_)), window_(makeWindow(*server_)) {
  server_->flush();
}

X11Clipboard::Atoms X11Clipboard::atomsOf(const XConnection& server) {
  return {.clipboard = server.atom("CLIPBOARD"),
          .targets = server.atom("TARGETS"),
          .timestamp = server.atom("TIMESTAMP"),
          .utf8String = server.atom("UTF8_STRING"),
          .utf8Mime = server.atom("text/plain;charset=utf-8"),
          .plainMime = server.atom("text/plain"),
          .stamp = server.atom("_QUILLBACK_STAMP")};
}

void X11Clipboard::put(const std::string& text) {
  text_ = text;
  // Becoming the owner needs the server's time, which the event of this change has.
  xcb_change_property(server_->get(), XCB_PROP_MODE_APPEND, window_, atoms_.stamp, XCB_ATOM_STRING,
                      8, 0, nullptr);
  server_->flush();
}

void X11Clipboard::handleEvents() {
  while (const auto event = server_->nextEvent()) handle(*event);
  server_->flush();
  if (server_->isBroken()) watch_.reset();
}

void X11Clipboard::handle(const xcb_generic_event_t& event) {
  switch (eventType(event)) {
    case XCB_PROPERTY_NOTIFY:
      own(eventAs<xcb_property_notify_event_t>(event));
      break;
    case XCB_SELECTION_REQUEST:
      serve(eventAs<xcb_selection_request_event_t>(event));
      break;
    case XCB_SELECTION_CLEAR:
      // A clear from before our latest copy is outdated.
      if (!isBefore(eventAs<xcb_selection_clear_event_t>(event).time, ownedSince_)) text_.clear();
      break;
    default:
      break;
  }
}

void X11Clipboard::own(const xcb_property_notify_event_t& event) {
  if (event.atom != atoms_.stamp) return;
  ownedSince_ = event.time;
  xcb_set_selection_owner(server_->get(), window_, atoms_.clipboard, event.time);
}

void X11Clipboard::serve(const xcb_selection_request_event_t& request) {
  // Old programs name no property and mean the one named like the target.
  const xcb_atom_t property = request.property == XCB_NONE ? request.target : request.property;
  const bool isOurs = request.selection == atoms_.clipboard &&
                      (request.time == XCB_CURRENT_TIME || !isBefore(request.time, ownedSince_));
  xcb_selection_notify_event_t reply{};
  reply.response_type = XCB_SELECTION_NOTIFY;
  reply.time = request.time;
  reply.requestor = request.requestor;
  reply.selection = request.selection;
  reply.target = request.target;
  reply.property = isOurs && write(request, property) ? property : XCB_NONE;
  std::array<char, 32> event{};
  static_assert(sizeof reply <= event.size());
  std::copy_n(static_cast<const char*>(static_cast<const void*>(&reply)), sizeof reply,
              event.data());
  xcb_send_event(server_->get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.data());
}

bool X11Clipboard::write(const xcb_selection_request_event_t& request, xcb_atom_t property) {
  const auto put = [&](xcb_atom_t type, std::uint8_t bits, std::size_t count, const void* data) {
    xcb_change_property(server_->get(), XCB_PROP_MODE_REPLACE, request.requestor, property, type,
                        bits, static_cast<std::uint32_t>(count), data);
    return true;
  };
  if (request.target == atoms_.targets) {
    const std::array<xcb_atom_t, 5> offered = {atoms_.targets, atoms_.timestamp, atoms_.utf8String,
                                               atoms_.utf8Mime, atoms_.plainMime};
    return put(XCB_ATOM_ATOM, 32, offered.size(), offered.data());
  }
  if (request.target == atoms_.timestamp) return put(XCB_ATOM_INTEGER, 32, 1, &ownedSince_);
  if (request.target != atoms_.utf8String && request.target != atoms_.utf8Mime &&
      request.target != atoms_.plainMime) {
    return false;
  }
  // One request carries hours of speech; a longer text is refused.
  constexpr std::size_t kRequestHeaderBytes = 64;
  const std::size_t limit = std::size_t{4} * xcb_get_maximum_request_length(server_->get());
  if (text_.size() + kRequestHeaderBytes > limit) return false;
  return put(request.target, 8, text_.size(), text_.data());
}

}  // namespace voxtrel::quillback
