#pragma once

#include "common/x11/XConnection.h"

namespace voxtrel::quillback {

/// Asks the program behind a window for a sign that it has read its events so far, by the ping that
/// window managers use to find programs that hang.
/// Thread: the loop's.  Borrows: XConnection (must outlive this).
class WindowPing {
 public:
  explicit WindowPing(const XConnection& server);

  /// False where the program gives no signs. The window may be one inside the program's.
  [[nodiscard]] bool ask(xcb_window_t window);
  /// True if the event is the sign for the latest question.
  [[nodiscard]] bool isSign(const xcb_generic_event_t& event);
  /// No sign is waited for any more.
  void forget();

 private:
  bool understandsPings(xcb_window_t window) const;
  /// The window or the one around it that understands pings; nothing where none does.
  xcb_window_t pingable(xcb_window_t window) const;
  void listen(bool isListening);

  const XConnection& server_;
  xcb_atom_t protocols_;
  xcb_atom_t ping_;
  std::uint32_t number_ = 0;
  xcb_window_t asked_ = XCB_NONE;
};

}  // namespace voxtrel::quillback
