#pragma once

#include <set>

#include "quillback/ports/KeyWatch.h"

namespace voxtrel::quillback {

/// Turns the key events of all keyboards into one press, one release and cancels of the hotkey.
/// Thread: the loop's.
class PushToTalk {
 public:
  using Keyboard = int;

  /// Key codes of the source of events; kNone is no key.
  struct Codes {
    static constexpr int kNone = -1;

    int hotkey = kNone;
    int escape = kNone;
    int leftShift = kNone;
    int rightShift = kNone;
    bool needsShift = false;  ///< a press counts only while a Shift is down

    bool operator==(const Codes&) const = default;
  };

  PushToTalk(Codes codes, KeyWatch::Listener listener);

  /// A key was pressed or repeats. The hotkey held on two keyboards is one press.
  void down(Keyboard keyboard, int code);
  void up(Keyboard keyboard, int code);
  /// Releases the keys of a keyboard that is gone.
  void gone(Keyboard keyboard);
  void allGone();
  /// New codes for the same keys. A held hotkey whose code changes is released.
  void setCodes(const Codes& codes);

  bool isHeld() const { return !holders_.empty(); }

 private:
  bool isShift(int code) const;
  void release();

  Codes codes_;
  KeyWatch::Listener listener_;
  std::set<Keyboard> holders_;
  std::set<std::pair<Keyboard, int>> shifts_;
  bool cancelled_ = false;
};

}  // namespace voxtrel::quillback
