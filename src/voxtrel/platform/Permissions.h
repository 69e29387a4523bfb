#pragma once

#include <functional>

namespace voxtrel {

/// Whether the push-to-talk key can be seen by this user's programs.
/// Thread: the main thread.
class AccessibilityTrust {
 public:
  virtual ~AccessibilityTrust() = default;

  /// Asked afresh on every call. `prompt`: where the answer is no, the platform tells the user how
  /// to grant it.
  virtual bool isTrusted(bool prompt) = 0;
};

/// Whether the microphone may be used.
/// Thread: `request` on the main thread; the answer arrives on any.
class MicrophoneAccess {
 public:
  virtual ~MicrophoneAccess() = default;

  virtual void request(std::function<void(bool granted)> answer) = 0;
};

}  // namespace voxtrel
