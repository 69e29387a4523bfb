#pragma once

#include <functional>

namespace voxtrel::quillback {

/// Reports the push-to-talk key while it lives, whatever window has the focus.
/// Thread: the loop's.
class KeyWatch {
 public:
  struct Listener {
    std::function<void()> onPressed;    ///< once per press, without auto-repeat
    std::function<void()> onReleased;   ///< also when the keyboard goes away with the key held
    std::function<void()> onCancelled;  ///< Escape was pressed while the key is held
  };

  virtual ~KeyWatch() = default;
};

}  // namespace voxtrel::quillback
