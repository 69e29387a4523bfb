#include "voxtrel/app/AppDelegate.h"

#include <chrono>
#include <utility>

#include "common/settings/ConfigManager.h"
#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/forms/SettingsView.h"
#include "voxtrel/menubar/StatusBarController.h"
#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/Notifications.h"
#include "voxtrel/platform/Permissions.h"
#include "voxtrel/platform/Preferences.h"
#include "voxtrel/platform/Scheduling.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kAccessibilityPollInterval = 500ms;
constexpr int kAccessibilityPollLimit = 60;

const FormWindowOptions kSetupWindow = {"Voxtrel Setup", 420, 340};

NotificationCategory crashCategory() {
  return {.identifier = CrashNotificationHelper::kCategory,
          .actions = {{.identifier = CrashNotificationHelper::kRestartAction,
                       .title = "Restart",
                       .foreground = true}}};
}

}  // namespace

AppDelegate::AppDelegate(const Desktop& desktop, RecordingIndicator& overlay)
    : desktop_(desktop),
      overlay_(overlay),
      logger_(desktop.log, "main"),
      crashNotificationDelegate_(std::make_shared<CrashNotificationDelegate>()) {}

void AppDelegate::applicationDidFinishLaunching() {
  logger_.info("Voxtrel launching");
  if (desktop_.userDefaults.boolForKey(SettingsView::kLaunchAtLoginKey)) {
    static_cast<void>(desktop_.loginItem.restore());  // a failure must not prevent the start
  }
  Notifications& notifications = desktop_.notifications;
  notifications.setCategories({crashCategory()});
  notifications.setDelegate(crashNotificationDelegate_);
  notifications.requestAuthorization();
  if (checkWeightsExist()) {
    requestPermissionsThenLaunch();
  } else {
    showModelDownload();
  }
}

bool AppDelegate::checkWeightsExist() const {
  const ConfigManager config(desktop_.homeDirectory);
  return config.weightsExist(config.readWhisperModel());
}

void AppDelegate::showModelDownload() {
  const auto done = [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->modelDownloadDone();
  };
  downloadWindow_ = desktop_.formWindows.makeWindow(
      kSetupWindow, ModelDownloadView::create({.bundle = desktop_.bundle,
                                               .backgroundQueue = desktop_.backgroundQueue,
                                               .childProcesses = desktop_.childProcesses,
                                               .mainLoop = desktop_.mainLoop},
                                              std::nullopt, {.onComplete = done, .onSkip = done}));
  downloadWindow_->makeKeyAndOrderFront();
}

void AppDelegate::modelDownloadDone() {
  if (!downloadWindow_) return;  // skipped in the second between success and completion
  downloadWindow_->close();
  downloadWindow_.reset();
  requestPermissionsThenLaunch();
}

void AppDelegate::requestPermissionsThenLaunch() {
  const bool trusted = desktop_.accessibilityTrust.isTrusted(true);
  desktop_.microphoneAccess.request(
      [weak = weak_from_this(), &mainLoop = desktop_.mainLoop, trusted](bool granted) {
        mainLoop.post([weak, granted, trusted] {
          if (const auto self = weak.lock()) self->continueWith(granted, trusted);
        });
      });
}

void AppDelegate::continueWith(bool microphoneGranted, bool trusted) {
  if (!microphoneGranted) {
    logger_.error("Microphone permission denied");
    showMicDeniedAlert();
  } else if (trusted) {
    openGate();
  } else {
    waitForAccessibility();
  }
}

void AppDelegate::waitForAccessibility() {
  accessibilityPollCount_.reset();
  accessibilityTimer_ =
      desktop_.mainLoop.every(kAccessibilityPollInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->pollAccessibility();
      });
}

void AppDelegate::pollAccessibility() {
  if (desktop_.accessibilityTrust.isTrusted(false)) {
    accessibilityTimer_.reset();
    openGate();
  } else if (accessibilityPollCount_.increment() == kAccessibilityPollLimit) {
    accessibilityTimer_.reset();
    showAccessibilityTimeoutAlert();
  }
}

void AppDelegate::openGate() {
  statusBar_ = StatusBarController::create(StatusBarPorts::of(desktop_, overlay_));
  crashNotificationDelegate_->processManager = statusBar_->processManager();
  if (std::exchange(wantsSettings_, false)) statusBar_->openSettings();
}

void AppDelegate::showMicDeniedAlert() {
  showPermissionAlert(
      {.messageText = "Microphone Permission Required",
       .informativeText =
           "Voxtrel needs microphone access to capture audio for speech-to-text. Please grant "
           "access in System Settings > Privacy & Security > Microphone, then relaunch the app.",
       .buttons = {"Open Settings", "Quit"}},
      PrivacyPane::microphone);
}

void AppDelegate::showAccessibilityTimeoutAlert() {
  showPermissionAlert(
      {.messageText = "Accessibility Permission Required",
       .informativeText =
           "Voxtrel needs Accessibility permission to detect the push-to-talk hotkey. Please grant "
           "access in System Settings > Privacy & Security > Accessibility, then relaunch the app.",
       .buttons = {"Open Settings", "Quit"}},
      PrivacyPane::accessibility);
}

void AppDelegate::showPermissionAlert(const Alert& alert, PrivacyPane pane) {
  constexpr std::size_t kOpenSettings = 0;
  desktop_.alerts.runModal(alert, [&desktop = desktop_, pane](std::size_t button) {
    if (button == kOpenSettings) desktop.privacySettings.open(pane);
    desktop.application.terminate();
  });
}

void AppDelegate::quitRequested() {
  if (statusBar_) {
    statusBar_->quit();
  } else {
    desktop_.application.terminate();
  }
}

/// After its set-up window was closed, the application has neither a window nor an icon.
void AppDelegate::reopenRequested() {
  if (downloadWindow_ && !downloadWindow_->isVisible()) downloadWindow_->makeKeyAndOrderFront();
}

void AppDelegate::settingsRequested() {
  if (statusBar_) return statusBar_->openSettings();
  wantsSettings_ = true;
  reopenRequested();
}

void AppDelegate::restartRequested() {
  if (statusBar_) statusBar_->restart();
}

void AppDelegate::applicationWillTerminate() {
  logger_.info("Voxtrel terminating");
  accessibilityTimer_.reset();
  if (statusBar_) statusBar_->shutdown();
}

}  // namespace voxtrel
