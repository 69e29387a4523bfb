#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quillback/insertion/clipboard/X11SelectionReader.h"
#include "quillback/insertion/paste/ContentReader.h"
#include "quillback/insertion/paste/Pipes.h"

namespace voxtrel::quillback {

/// X11's clipboard. Its content stays here; programs that paste ask for it, until another program copies
/// something or this is destroyed. GNOME keeps it the same as Wayland's clipboard, and no window is needed.
/// Thread: the loop's.  Owns: a connection to the server with an invisible window.
/// Borrows: Loop (must outlive this).
/// Fails by: null from `open`; an offer that is not taken; does nothing once the server is gone.
class X11Clipboard final : public PasteClipboard {
 public:
  /// Null without a server.
  [[nodiscard]] static std::unique_ptr<X11Clipboard> open(Loop& loop);
  X11Clipboard(const X11Clipboard&) = delete;
  X11Clipboard& operator=(const X11Clipboard&) = delete;

  /// Replaces the clipboard's text.
  void put(const std::string& text);

  void read(OnContent onContent) override;
  ClipboardContent stopReading() override;
  /// The content is there once the desktop has asked for its types, as GNOME does at once. Without types
  /// nothing can be pasted.
  void offer(ClipboardContent content, OnOffered onOffered, OnRead onRead) override;
  bool holdsOffer() const override { return isOwner_; }
  bool seesReads() const override { return true; }
  bool isWatched() const override { return true; }

  bool isConnected() const { return watch_ != nullptr; }
  /// False after an offer that was not taken: this desktop's clipboard is another one.
  bool isDesktops() const { return isDesktops_; }

 private:
  X11Clipboard(std::unique_ptr<XConnection> server, Loop& loop);

  void handleEvents();
  void handle(const xcb_generic_event_t& event);
  void nameTypes();
  void requestTime();
  void own(const xcb_property_notify_event_t& event);
  void endOffer(bool isThere);
  void serve(const xcb_selection_request_event_t& request);
  /// Writes the requested form of the content to the requestor's property; false if it is unknown.
  bool write(const xcb_selection_request_event_t& request, xcb_atom_t property);
  bool writeContent(const xcb_selection_request_event_t& request, xcb_atom_t property);
  void readTypes(std::string_view atoms);
  void openPipe(const std::string& type, const ContentReader::OnPipe& onPipe);

  std::unique_ptr<XConnection> server_;
  Loop& loop_;
  X11Atoms atoms_;
  xcb_atom_t clipboard_;
  xcb_atom_t targets_;
  xcb_atom_t timestamp_;
  xcb_atom_t stamp_;  // a property of our window; the event of its change has the server's time
  xcb_window_t window_;
  xcb_timestamp_t ownedSince_ = XCB_CURRENT_TIME;
  bool isOwner_ = false;
  bool isDesktops_ = true;
  ClipboardContent content_;
  std::vector<xcb_atom_t> types_;  // of the content, in its order
  OnOffered onOffered_;
  OnRead onRead_;
  std::unique_ptr<Loop::Timer> takeTimeout_;
  // Of what another program holds; destroyed in reverse order.
  OnContent onContent_;
  std::unique_ptr<X11SelectionReader> selection_;
  std::list<PipeWriter> writers_;
  std::unique_ptr<ContentReader> reader_;
  std::unique_ptr<Loop::Watch> watch_;
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace voxtrel::quillback
