#pragma once

#include <set>

#include "quillback/ports/KeyWatch.h"

namespace voxtrel::quillback {

/// Makes one press and one release of what the keyboards' keys do, whatever numbers they go by.
/// Thread: the loop's.
class PushToTalk {
 public:
  using Keyboard = int;

  /// Key codes; kNone is no key.
  struct Codes {
    static constexpr int kNone = -1;

    int hotkey = kNone;
    int escape = kNone;
    int leftShift = kNone;
    int rightShift = kNone;
    bool needsShift = false;  ///< the key counts only where a Shift is down as it goes down

    bool operator==(const Codes&) const = default;
  };

  PushToTalk(Codes codes, KeyWatch::Listener listener);

  /// A key of one keyboard went down or repeats. The hotkey held on two keyboards is one press.
  void down(Keyboard keyboard, int code);
  void up(Keyboard keyboard, int code);
  /// Its keys are not held any more.
  void gone(Keyboard keyboard);
  /// All keyboards are gone.
  void allGone();
  /// Other numbers for the same keys. A hotkey whose number changes under the finger is let go.
  void setCodes(const Codes& codes);

  bool isHeld() const { return !holders_.empty(); }

 private:
  bool isShift(int code) const;
  void letGo();

  Codes codes_;
  KeyWatch::Listener listener_;
  std::set<Keyboard> holders_;
  std::set<std::pair<Keyboard, int>> shifts_;
  bool cancelled_ = false;
};

}  // namespace voxtrel::quillback
