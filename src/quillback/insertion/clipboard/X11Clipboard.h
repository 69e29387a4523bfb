#pragma once

#include <string>

#include "common/x11/XConnection.h"
#include "quillback/insertion/clipboard/Clipboard.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// X11's clipboard: the text stays with us, and whoever pastes asks us for it, until somebody else
/// copies something or we end.
/// Thread: the loop's.  Owns: a connection to the server with a window that nobody sees.
/// Fails by: silence where the server goes away.
class X11Clipboard final : public Clipboard {
 public:
  /// Nothing where there is no server.
  [[nodiscard]] static std::unique_ptr<X11Clipboard> open(Loop& loop);

  void put(const std::string& text) override;

 private:
  struct Atoms {
    xcb_atom_t clipboard;
    xcb_atom_t targets;
    xcb_atom_t timestamp;
    xcb_atom_t utf8String;
    xcb_atom_t utf8Mime;
    xcb_atom_t plainMime;
    xcb_atom_t stamp;  // a property of our window; writing it tells the server's time
  };

  explicit X11Clipboard(std::unique_ptr<XConnection> server);
  static Atoms atomsOf(const XConnection& server);

  void handleEvents();
  void handle(const xcb_generic_event_t& event);
  void own(const xcb_property_notify_event_t& event);
  void serve(const xcb_selection_request_event_t& request);
  /// Writes the wanted form of the text to the asker's property; false where we do not have it.
  bool write(const xcb_selection_request_event_t& request, xcb_atom_t property);

  std::unique_ptr<XConnection> server_;
  Atoms atoms_;
  xcb_window_t window_;
  xcb_timestamp_t ownedSince_ = XCB_CURRENT_TIME;
  std::string text_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
