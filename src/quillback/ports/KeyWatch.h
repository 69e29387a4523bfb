#pragma once

#include <functional>

namespace voxtrel::quillback {

/// Tells of the push-to-talk key, whatever window has the focus, for as long as it lives.
/// Thread: the loop's.
class KeyWatch {
 public:
  struct Listener {
    std::function<void()> onPressed;    ///< once per press: auto-repeat is not reported
    std::function<void()> onReleased;   ///< also when the keyboard goes away with the key held
    std::function<void()> onCancelled;  ///< Escape was pressed while the key is held
  };

  virtual ~KeyWatch() = default;
};

}  // namespace voxtrel::quillback
