#include "common/x11/XConnection.h"

#include <poll.h>
#include <xcb/xcbext.h>

#include <cstdint>
#include <utility>

namespace voxtrel {

std::unique_ptr<XConnection> XConnection::open(const char* display) {
  xcb_connection_t* connection = xcb_connect(display, nullptr);
  if (xcb_connection_has_error(connection) != 0) {
    xcb_disconnect(connection);
    return nullptr;
  }
  return std::unique_ptr<XConnection>(new XConnection(connection, false));
}

std::unique_ptr<XConnection> XConnection::borrow(xcb_connection_t* connection) {
  return std::unique_ptr<XConnection>(new XConnection(connection, true));
}

XConnection::XConnection(xcb_connection_t* connection, bool isBorrowed)
    : connection_(connection),
      isBorrowed_(isBorrowed),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root) {}

XConnection::~XConnection() {
  if (isBorrowed_) return;
  // The server drops requests it has not read when the connection closes.
  reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection_));
  xcb_disconnect(connection_);
}

XOwned<xcb_generic_event_t> XConnection::nextEvent() const {
  return XOwned<xcb_generic_event_t>(xcb_poll_for_event(connection_));
}

void* XConnection::wait(unsigned sequence) const {
  using Clock = std::chrono::steady_clock;
  if (isBorrowed_) return xcb_wait_for_reply(connection_, sequence, nullptr);
  checkProbe();
  const auto deadline = Clock::now() + (isStuck_ ? std::chrono::milliseconds(0) : kReplyTimeout);
  flush();
  for (;;) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(connection_, sequence, &reply, &error) != 0) {
      std::free(error);
      return reply;
    }
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (isBroken() || left.count() <= 0) break;
    pollfd readable{descriptor(), POLLIN, 0};
    poll(&readable, 1, static_cast<int>(left.count()));
  }
  xcb_discard_reply(connection_, sequence);
  if (!std::exchange(isStuck_, true)) {
    probe_ = xcb_get_input_focus(connection_).sequence;
    flush();
  }
  return nullptr;
}

void XConnection::checkProbe() const {
  void* reply = nullptr;
  xcb_generic_error_t* error = nullptr;
  if (!isStuck_ || xcb_poll_for_reply(connection_, probe_, &reply, &error) == 0) return;
  std::free(reply);
  std::free(error);
  isStuck_ = false;
}

xcb_atom_t XConnection::atom(std::string_view name) const {
  const auto interned = reply<xcb_intern_atom_reply_t>(
      xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
  return interned ? interned->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

}  // namespace voxtrel
