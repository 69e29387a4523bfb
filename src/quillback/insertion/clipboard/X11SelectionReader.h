#pragma once

#include <functional>
#include <string>

#include "quillback/insertion/clipboard/X11Atoms.h"

namespace voxtrel::quillback {

/// Reads what another program holds as X11's clipboard, one type after the other. A long one comes in parts.
/// Thread: the loop's.  Owns: an invisible window.  Borrows: XConnection (must outlive this).
/// Fails by: no bytes; no answer from a program that does not give one.
class X11SelectionReader {
 public:
  using OnBytes = std::function<void(std::string bytes)>;

  X11SelectionReader(const XConnection& server, X11Atoms& atoms, xcb_atom_t selection);
  X11SelectionReader(const X11SelectionReader&) = delete;
  X11SelectionReader& operator=(const X11SelectionReader&) = delete;
  ~X11SelectionReader();

  /// `onBytes` is called once, from `handle`; not if this was called again before.
  void read(xcb_atom_t type, OnBytes onBytes);
  /// Takes an event; those of other windows are ignored. May destroy this.
  void handle(const xcb_generic_event_t& event);

 private:
  void onNotify(const xcb_selection_notify_event_t& event);
  void onPart();
  void end(std::string bytes);

  const XConnection& server_;
  xcb_atom_t selection_;
  xcb_atom_t property_;
  xcb_atom_t incremental_;
  xcb_window_t window_;
  xcb_atom_t type_ = XCB_ATOM_NONE;  // that is being read
  bool comesInParts_ = false;
  std::string bytes_;
  OnBytes onBytes_;
};

/// A window that is never shown.
xcb_window_t makeHiddenWindow(const XConnection& server);

}  // namespace voxtrel::quillback
