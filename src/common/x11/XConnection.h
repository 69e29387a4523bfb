#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "common/base/Handle.h"

namespace voxtrel {

template <typename T>
using XOwned = Handle<T, std::free>;

/// The event's type, without the mark for events that a client sent.
inline int eventType(const xcb_generic_event_t& event) {
  return event.response_type & 0x7f;
}

/// `event` as what its type says it is.
template <typename Event>
const Event& eventAs(const xcb_generic_event_t& event) {
  return *static_cast<const Event*>(static_cast<const void*>(&event));
}

/// A connection to the X server. A server that dies ends the connection, not the program.
/// Thread: one.  Owns: the connection, unless it is borrowed.
/// Fails by: a null reply, atom 0.
class XConnection {
 public:
  /// Reply timeout of a connection of ours. After a reply that timed out, the following ones are not
  /// waited for until the server replies again: one that hangs must not keep the program from ending.
  static constexpr std::chrono::milliseconds kReplyTimeout{250};

  /// Connects to `display`, by default the one $DISPLAY names. Null without a server.
  [[nodiscard]] static std::unique_ptr<XConnection> open(const char* display = nullptr);
  /// Uses another library's connection. That library reads its socket, so replies have no timeout.
  [[nodiscard]] static std::unique_ptr<XConnection> borrow(xcb_connection_t* connection);
  ~XConnection();
  XConnection(const XConnection&) = delete;
  XConnection& operator=(const XConnection&) = delete;

  xcb_connection_t* get() const { return connection_; }
  xcb_window_t root() const { return root_; }
  int descriptor() const { return xcb_get_file_descriptor(connection_); }
  bool isBroken() const { return xcb_connection_has_error(connection_) != 0; }
  void flush() const { xcb_flush(connection_); }

  /// The next event, or null if none has arrived.
  XOwned<xcb_generic_event_t> nextEvent() const;
  /// Waits for a reply. Events that arrive meanwhile are queued: `descriptor` is not readable for them.
  template <typename Reply, typename Cookie>
  XOwned<Reply> reply(Cookie cookie) const {
    return XOwned<Reply>(static_cast<Reply*>(wait(cookie.sequence)));
  }
  xcb_atom_t atom(std::string_view name) const;

 private:
  XConnection(xcb_connection_t* connection, bool isBorrowed);
  void* wait(unsigned sequence) const;
  /// Sees whether the server, after it was stuck, has replied again.
  void checkProbe() const;

  xcb_connection_t* connection_;
  bool isBorrowed_;
  xcb_window_t root_;
  mutable bool isStuck_ = false;
  mutable unsigned probe_ = 0;  ///< while stuck, the request whose reply is awaited
};

}  // namespace voxtrel
