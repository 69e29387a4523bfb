#pragma once

namespace voxtrel {

enum class PrivacyPane { microphone, accessibility };

/// The place where the desktop's user grants permissions.
/// Thread: the main thread.
class PrivacySettings {
 public:
  virtual ~PrivacySettings() = default;

  /// Opens the place for this permission, without waiting for it.
  /// Fails by: nothing; a place that cannot be opened stays closed.
  virtual void open(PrivacyPane pane) = 0;
};

}  // namespace voxtrel
