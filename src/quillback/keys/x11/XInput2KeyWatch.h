#pragma once

#include "quillback/keys/OwnKeys.h"
#include "quillback/keys/x11/KeyPlaces.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// The push-to-talk key under X11, by raw events of all keyboards, which come whatever window has
/// the focus or has grabbed the keyboard. A release follows every press, a cancelled one too.
/// Thread: the loop's.  Owns: a connection to the server.  Borrows: OwnKeys (must outlive this).
/// Fails by: `onLost`, once, where the server goes away; a key that was held is released first.
class XInput2KeyWatch final : public KeyWatch {
 public:
  struct Opened {
    std::unique_ptr<XInput2KeyWatch> watch;  ///< nothing where the server does not do
    std::string why;                         ///< then the reason, for people
  };

  /// Watches the keyboards of the server that $DISPLAY names. `onLost` may destroy the watch.
  [[nodiscard]] static Opened open(const Hotkey& hotkey, KeyWatch::Listener listener,
                                   OwnKeys& ownKeys, Loop& loop, std::function<void()> onLost);

 private:
  XInput2KeyWatch(std::unique_ptr<XConnection> server, const Hotkey& hotkey,
                  KeyWatch::Listener listener, OwnKeys& ownKeys, std::function<void()> onLost);

  static std::string missing(const XConnection& server);
  void selectEvents();
  void handleEvents();
  void handle(const xcb_generic_event_t& event);
  void handleInput(const xcb_ge_generic_event_t& event);
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
