#pragma once

#include <functional>

namespace voxtrel {

/// Whether this user's programs can see the push-to-talk key.
/// Thread: the main thread.
class AccessibilityTrust {
 public:
  virtual ~AccessibilityTrust() = default;

  /// Checked on every call. `prompt`: if not trusted, the platform tells the user how to grant it.
  virtual bool isTrusted(bool prompt) = 0;
};

/// Whether the microphone may be used.
/// Thread: `request` on the main thread; the answer arrives on any.
class MicrophoneAccess {
 public:
  virtual ~MicrophoneAccess() = default;

  virtual void request(std::function<void(bool granted)> answer) = 0;
};

enum class PrivacyPane { microphone, accessibility };

/// The place where the user grants permissions.
/// Thread: the main thread.
class PrivacySettings {
 public:
  virtual ~PrivacySettings() = default;

  /// Opens the place for this permission and does not wait for it.
  /// Fails by: nothing happens.
  virtual void open(PrivacyPane pane) = 0;
};

}  // namespace voxtrel
