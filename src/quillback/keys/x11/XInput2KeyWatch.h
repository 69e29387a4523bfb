#pragma once

#include <tl/expected.hpp>

#include "quillback/keys/OwnKeys.h"
#include "quillback/keys/x11/KeyPlaces.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// The push-to-talk key under X11, from raw events of all keyboards, which arrive whatever window has
/// the focus or a grab. Every press is followed by a release, also after a cancel.
/// Thread: the loop's.  Owns: a connection to the server.  Borrows: OwnKeys (must outlive this).
/// Fails by: an error from `open`; later `onLost`, once, when the server goes away. A held key is
/// released first.
class XInput2KeyWatch final : public KeyWatch {
 public:
  /// Watches the keyboards of the server that $DISPLAY names. The error is for people. `onLost` may
  /// destroy the watch.
  [[nodiscard]] static tl::expected<std::unique_ptr<XInput2KeyWatch>, std::string> open(
      const Hotkey& hotkey, KeyWatch::Listener listener, OwnKeys& ownKeys, Loop& loop,
      std::function<void()> onLost);

 private:
  XInput2KeyWatch(std::unique_ptr<XConnection> server, const Hotkey& hotkey,
                  KeyWatch::Listener listener, OwnKeys& ownKeys, std::function<void()> onLost);

  void selectEvents();
  void handleEvents();
  void handle(const xcb_generic_event_t& event);
  void handleKey(const xcb_generic_event_t& event, bool isDown);
  void handleHierarchy(const xcb_generic_event_t& event);
  void lose();

  std::unique_ptr<XConnection> server_;
  Hotkey hotkey_;
  PushToTalk key_;
  OwnKeys& ownKeys_;
  std::function<void()> onLost_;
  int inputOpcode_ = 0;
  int keyboardEvent_ = 0;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
