#include "app/AppDelegate.h"

#include <chrono>

#include "config/ConfigManager.h"
#include "engine/CrashNotificationHelper.h"
#include "menubar/StatusBarController.h"
#include "platform/Desktop.h"
#include "platform/MainLoop.h"
#include "platform/Notifications.h"
#include "platform/Permissions.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kAccessibilityPollInterval = 500ms;
constexpr int kAccessibilityPollLimit = 60;

NotificationCategory crashCategory() {
  return {.identifier = CrashNotificationHelper::kCategory,
          .actions = {{.identifier = CrashNotificationHelper::kRestartAction,
                       .title = "Restart",
                       .foreground = true}}};
}

StatusBarPorts statusBarPorts(Desktop& desktop, RecordingOverlay& overlay) {
  return {.process = {.bundle = desktop.bundle(),
                      .backgroundQueue = desktop.backgroundQueue(),
                      .childProcesses = desktop.childProcesses(),
                      .clock = desktop.clock(),
                      .log = desktop.log(),
                      .mainLoop = desktop.mainLoop(),
                      .notifications = desktop.notifications()},
          .application = desktop.application(),
          .overlay = overlay,
          .settings = desktop.settingsPresenter(),
          .sleepWatch = desktop.sleepWatch(),
          .statusItem = desktop.statusItem(),
          .updater = desktop.updater()};
}

}  // namespace

AppDelegate::AppDelegate(Desktop& desktop, RecordingOverlay& overlay)
    : desktop_(desktop),
      overlay_(overlay),
      logger_(desktop.log(), "main"),
      crashNotificationDelegate_(std::make_shared<CrashNotificationDelegate>()) {}

void AppDelegate::applicationDidFinishLaunching() {
  logger_.info("Voxtrel launching");
  Notifications& notifications = desktop_.notifications();
  notifications.setCategories({crashCategory()});
  notifications.setDelegate(crashNotificationDelegate_);
  notifications.requestAuthorization();
  if (!checkWeightsExist()) logger_.info("The configured model's weights are not installed");
  requestPermissionsThenLaunch();
}

bool AppDelegate::checkWeightsExist() const {
  const ConfigManager config(desktop_.homeDirectory());
  return config.weightsExist(config.readWhisperModel());
}

void AppDelegate::requestPermissionsThenLaunch() {
  const bool trusted = desktop_.accessibilityTrust().isTrusted(true);
  desktop_.microphoneAccess().request(
      [weak = weak_from_this(), &mainLoop = desktop_.mainLoop(), trusted](bool granted) {
        mainLoop.post([weak, granted, trusted] {
          if (const auto self = weak.lock()) self->continueWith(granted, trusted);
        });
      });
}

void AppDelegate::continueWith(bool microphoneGranted, bool trusted) {
  if (!microphoneGranted) {
    logger_.error("Microphone permission denied");
    desktop_.application().terminate();
  } else if (trusted) {
    openGate();
  } else {
    waitForAccessibility();
  }
}

void AppDelegate::waitForAccessibility() {
  accessibilityPollCount_.reset();
  accessibilityTimer_ =
      desktop_.mainLoop().every(kAccessibilityPollInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->pollAccessibility();
      });
}

void AppDelegate::pollAccessibility() {
  if (desktop_.accessibilityTrust().isTrusted(false)) {
    accessibilityTimer_.reset();
    openGate();
  } else if (accessibilityPollCount_.increment() == kAccessibilityPollLimit) {
    accessibilityTimer_.reset();
    logger_.error("Accessibility permission was not granted in time");
    desktop_.application().terminate();
  }
}

void AppDelegate::openGate() {
  statusBar_ = StatusBarController::create(statusBarPorts(desktop_, overlay_));
  crashNotificationDelegate_->processManager = statusBar_->processManager();
}

void AppDelegate::quitRequested() {
  if (statusBar_) {
    statusBar_->quit();
  } else {
    desktop_.application().terminate();
  }
}

void AppDelegate::applicationWillTerminate() {
  logger_.info("Voxtrel terminating");
  accessibilityTimer_.reset();
  if (statusBar_) statusBar_->shutdown();
}

}  // namespace voxtrel
