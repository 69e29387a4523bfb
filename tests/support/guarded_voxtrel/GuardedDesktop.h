#pragma once

#include <memory>
#include <optional>
#include <string>

#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/RealFft.h"
#include "voxtrel/platform/linux/permissions/SandboxMicrophoneAccess.h"
#include "voxtrel/platform/linux/permissions/SessionKeyTrust.h"

namespace voxtrel::testing {

/// The real desktop, but for two places that a test may choose.
/// Thread: the main thread.  Owns: the real desktop, the adapters for those places.
class GuardedDesktop final : public Desktop {
 public:
  struct Places {
    /// Whether this file exists says whether the application is in a sandbox.
    std::optional<std::string> sandboxMarker;
    /// Every node `event*` in this folder that can be opened is a keyboard.
    std::optional<std::string> inputFolder;
  };

  GuardedDesktop(std::unique_ptr<Desktop> real, const Places& places);

  AccessibilityTrust& accessibilityTrust() override;
  MicrophoneAccess& microphoneAccess() override;

  Alerts& alerts() override { return real_->alerts(); }
  Application& application() override { return real_->application(); }
  ApplicationBundle& bundle() override { return real_->bundle(); }
  BackgroundQueue& backgroundQueue() override { return real_->backgroundQueue(); }
  ChildProcessLauncher& childProcesses() override { return real_->childProcesses(); }
  Clock& clock() override { return real_->clock(); }
  FormWindows& formWindows() override { return real_->formWindows(); }
  FrameTimer& frameTimer() override { return real_->frameTimer(); }
  Log& log() override { return real_->log(); }
  LoginItem& loginItem() override { return real_->loginItem(); }
  MainLoop& mainLoop() override { return real_->mainLoop(); }
  Microphone& microphone() override { return real_->microphone(); }
  Notifications& notifications() override { return real_->notifications(); }
  OverlayStage& overlayStage() override { return real_->overlayStage(); }
  PrivacySettings& privacySettings() override { return real_->privacySettings(); }
  SleepWatch& sleepWatch() override { return real_->sleepWatch(); }
  StatusItem& statusItem() override { return real_->statusItem(); }
  Updater& updater() override { return real_->updater(); }
  UserDefaults& userDefaults() override { return real_->userDefaults(); }
  std::unique_ptr<RealFft> makeRealFft() override { return real_->makeRealFft(); }
  std::string homeDirectory() const override { return real_->homeDirectory(); }

 private:
  const std::unique_ptr<Desktop> real_;
  std::optional<SandboxMicrophoneAccess> microphoneAccess_;
  std::optional<SessionKeyTrust> trust_;
};

}  // namespace voxtrel::testing
