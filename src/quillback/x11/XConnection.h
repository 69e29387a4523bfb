#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

struct XFree {
  void operator()(void* block) const { std::free(block); }
};
template <typename T>
using XOwned = std::unique_ptr<T, XFree>;

/// A connection to the X server. A server that dies ends the connection, never the program.
/// Thread: one.  Owns: the connection.
class XConnection {
 public:
  /// How long an answer is waited for: a server that hangs must not keep us from ending. The answers
  /// after one that did not come are not waited for.
  static constexpr std::chrono::milliseconds kPatience{250};

  /// To the server that $DISPLAY names; nothing where there is none.
  [[nodiscard]] static std::unique_ptr<XConnection> open();
  ~XConnection();
  XConnection(const XConnection&) = delete;
  XConnection& operator=(const XConnection&) = delete;

  xcb_connection_t* get() const { return connection_; }
  xcb_window_t root() const { return root_; }
  int descriptor() const { return xcb_get_file_descriptor(connection_); }
  bool isBroken() const { return xcb_connection_has_error(connection_) != 0; }
  void flush() const { xcb_flush(connection_); }

  /// The next event; nothing where there is none at the moment.
  XOwned<xcb_generic_event_t> nextEvent() const;
  /// Events that arrived meanwhile are queued, and the descriptor does not tell of those.
  template <typename Reply, typename Cookie>
  XOwned<Reply> answer(Cookie cookie) const {
    return XOwned<Reply>(static_cast<Reply*>(wait(cookie.sequence)));
  }
  /// 0 where the server does not answer.
  xcb_atom_t atom(std::string_view name) const;

 private:
  explicit XConnection(xcb_connection_t* connection);
  void* wait(unsigned sequence) const;

  xcb_connection_t* connection_;
  xcb_window_t root_;
  mutable bool isStuck_ = false;
};

}  // namespace voxtrel::quillback
