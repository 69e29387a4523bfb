#include "quillback/x11/XConnection.h"

#include <poll.h>
#include <xcb/xcbext.h>

#include <cstdint>

namespace voxtrel::quillback {

std::unique_ptr<XConnection> XConnection::open() {
  int screen = 0;
  xcb_connection_t* connection = xcb_connect(nullptr, &screen);
  if (xcb_connection_has_error(connection) != 0) {
    xcb_disconnect(connection);
    return nullptr;
  }
  // The constructor is private.
  return std::unique_ptr<XConnection>(new XConnection(connection));
}

XConnection::XConnection(xcb_connection_t* connection)
    : connection_(connection),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root) {}

XConnection::~XConnection() {
  // The server throws away what it has not read once it sees that we are gone.
  answer<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection_));
  xcb_disconnect(connection_);
}

XOwned<xcb_generic_event_t> XConnection::nextEvent() const {
  return XOwned<xcb_generic_event_t>(xcb_poll_for_event(connection_));
}

void* XConnection::wait(unsigned sequence) const {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + (isStuck_ ? std::chrono::milliseconds(0) : kPatience);
  flush();
  for (;;) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(connection_, sequence, &reply, &error) != 0) {
      std::free(error);
      isStuck_ = false;
      return reply;
    }
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (isBroken() || left.count() <= 0) break;
    pollfd readable{descriptor(), POLLIN, 0};
    poll(&readable, 1, static_cast<int>(left.count()));
  }
  isStuck_ = true;
  xcb_discard_reply(connection_, sequence);
  return nullptr;
}

xcb_atom_t XConnection::atom(std::string_view name) const {
  const auto reply = answer<xcb_intern_atom_reply_t>(
      xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

}  // namespace voxtrel::quillback
