#pragma once

#include <string>

#include "common/x11/XConnection.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// X11's clipboard. The text stays here; programs that paste ask for it, until another program copies
/// something or this is destroyed.
/// Thread: the loop's.  Owns: a connection to the server with an invisible window.
/// Fails by: null from `open`; does nothing once the server is gone.
class X11Clipboard {
 public:
  /// Null without a server.
  [[nodiscard]] static std::unique_ptr<X11Clipboard> open(Loop& loop);

  /// Replaces the clipboard's text.
  void put(const std::string& text);

 private:
  struct Atoms {
    xcb_atom_t clipboard;
    xcb_atom_t targets;
    xcb_atom_t timestamp;
    xcb_atom_t utf8String;
    xcb_atom_t utf8Mime;
    xcb_atom_t plainMime;
    xcb_atom_t stamp;  // a property of our window; the event of its change has the server's time
  };

  explicit X11Clipboard(std::unique_ptr<XConnection> server);
  static Atoms atomsOf(const XConnection& server);

  void handleEvents();
  void handle(const xcb_generic_event_t& event);
  void own(const xcb_property_notify_event_t& event);
  void serve(const xcb_selection_request_event_t& request);
  /// Writes the requested form of the text to the requestor's property; false if it is unknown.
  bool write(const xcb_selection_request_event_t& request, xcb_atom_t property);

  std::unique_ptr<XConnection> server_;
  Atoms atoms_;
  xcb_window_t window_;
  xcb_timestamp_t ownedSince_ = XCB_CURRENT_TIME;
  std::string text_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
