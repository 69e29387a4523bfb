#pragma once

namespace voxtrel::quillback {

/// Whether the screen of the user's session is locked.
/// Thread: the loop's.
class ScreenLock {
 public:
  virtual ~ScreenLock() = default;

  /// Asks again at each call. False where nothing can tell.
  [[nodiscard]] virtual bool isLocked() = 0;
};

}  // namespace voxtrel::quillback
