#pragma once

#include "voxtrel/platform/Permissions.h"

namespace voxtrel {

/// Whether the user trusts the application with Accessibility. A prompt is the system's own dialog.
/// Thread: the main thread.
class ProcessTrust final : public AccessibilityTrust {
 public:
  bool isTrusted(bool prompt) override;
};

/// The system's answer about the microphone; it asks the user the first time.
/// Thread: `request` on the main thread; the answer arrives on any.
class CaptureAccess final : public MicrophoneAccess {
 public:
  void request(std::function<void(bool granted)> answer) override;
};

/// The panes of System Settings.
/// Thread: the main thread.
/// Fails by: nothing happens.
class SettingsPanes final : public PrivacySettings {
 public:
  void open(PrivacyPane pane) override;
};

}  // namespace voxtrel
