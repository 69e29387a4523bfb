#include "voxtrel/menubar/StatusBarController.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/forms/SettingsView.h"
#include "voxtrel/menubar/StatusContent.h"
#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/RecordingIndicator.h"
#include "voxtrel/platform/SleepWatch.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kRefreshInterval = 50ms;
constexpr std::chrono::milliseconds kRestartStopTimeout = 3s;
constexpr std::chrono::milliseconds kQuitStopTimeout = 2s;
constexpr std::chrono::milliseconds kLaunchAfterWake = 1500ms;

const FormWindowOptions kSettingsWindow = {"Voxtrel Settings", 420, 280};
const FormWindowOptions kDownloadWindow = {"Voxtrel — Download Model", 420, 340};

constexpr std::size_t kStatusRow = 0;
constexpr std::size_t kLastTextRow = 1;

}  // namespace

StatusBarController::StatusBarController(const StatusBarPorts& ports)
    : ports_(ports),
      logger_(ports.process.log, "ui"),
      processManager_(std::make_shared<ProcessManager>(ports.process)) {}

StatusBarPorts StatusBarPorts::of(const Desktop& desktop, RecordingIndicator& overlay) {
  return {.process = {.bundle = desktop.bundle,
                      .backgroundQueue = desktop.backgroundQueue,
                      .childProcesses = desktop.childProcesses,
                      .clock = desktop.clock,
                      .log = desktop.log,
                      .mainLoop = desktop.mainLoop,
                      .notifications = desktop.notifications},
          .application = desktop.application,
          .config = ConfigManager(desktop.homeDirectory),
          .formWindows = desktop.formWindows,
          .loginItem = desktop.loginItem,
          .overlay = overlay,
          .sleepWatch = desktop.sleepWatch,
          .statusItem = desktop.statusItem,
          .updater = desktop.updater,
          .userDefaults = desktop.userDefaults};
}

std::shared_ptr<StatusBarController> StatusBarController::create(const StatusBarPorts& ports) {
  std::shared_ptr<StatusBarController> controller(new StatusBarController(ports));
  controller->begin();
  return controller;
}

void StatusBarController::begin() {
  logger_.info("StatusBarController initialized");
  buildMenu();
  applyIcon(AppState::loading);
  processManager_->setOnStateChange([weak = weak_from_this()](AppState newState) {
    if (const auto self = weak.lock()) self->handleStateChange(newState);
  });
  processManager_->setOnStatusOutdated([weak = weak_from_this()](Clock::TimePoint since) {
    if (const auto self = weak.lock()) self->refreshAfter(since);
  });
  processManager_->launch();
  observeSleep();
  lastTick_ = ports_.process.clock.now();
  refreshAfter(lastTick_);
}

// The menu

void StatusBarController::buildMenu() {
  const auto information = [](std::string title) {
    return MenuItem{.title = std::move(title), .enabled = false};
  };
  ports_.statusItem.setMenu({
      information(std::string(labelFor(AppState::idle))),
      information(lastTextTitle("")),
      {.separator = true},
      {.title = "Settings...",
       .keyEquivalent = ",",
       .action = whileAlive(&StatusBarController::openSettings)},
      {.title = "Check for Updates...",
       .action = [&updater = ports_.updater] { updater.checkForUpdates(); },
       .systemAction = Updater::kCheckForUpdates},
      {.title = "Restart",
       .keyEquivalent = "r",
       .action = whileAlive(&StatusBarController::restart)},
      {.title = "Quit Voxtrel",
       .keyEquivalent = "q",
       .action = whileAlive(&StatusBarController::quit)},
  });
}

std::function<void()> StatusBarController::whileAlive(void (StatusBarController::*command)()) {
  return [weak = weak_from_this(), command] {
    if (const auto self = weak.lock()) (self.get()->*command)();
  };
}

void StatusBarController::applyIcon(AppState state) {
  ports_.statusItem.setSymbol(symbolFor(state));
}

// A change is shown at the first tick after it. No timer runs while there is nothing to show, and a
// running timer is already set for the next tick.
void StatusBarController::refreshAfter(Clock::TimePoint change) {
  if (refreshTimer_) return;
  const auto sinceLastTick = std::max(change - lastTick_, Clock::TimePoint::duration::zero());
  const auto ticks = sinceLastTick / kRefreshInterval + 1;
  refreshTimer_ =
      ports_.process.mainLoop.at(lastTick_ + ticks * kRefreshInterval, [this] { refreshUI(); });
}

void StatusBarController::refreshUI() {
  refreshTimer_.reset();
  lastTick_ += (ports_.process.clock.now() - lastTick_) / kRefreshInterval * kRefreshInterval;
  const EngineStatus status = processManager_->status();
  applyIcon(status.state);
  ports_.statusItem.setTitle(kStatusRow, statusTitle(status.state, status.lastError));
  ports_.statusItem.setTitle(kLastTextRow, lastTextTitle(status.lastText));
}

void StatusBarController::handleStateChange(AppState newState) {
  if (newState == AppState::recording) {
    ports_.overlay.show();
  } else if (lastOverlayState_ == AppState::recording) {
    ports_.overlay.hide();
  }
  lastOverlayState_ = newState;
}

// Commands

void StatusBarController::restart() {
  processManager_->resetCrashCount();
  processManager_->stopAndWait(kRestartStopTimeout);
  processManager_->launch();
}

void StatusBarController::quit() {
  shutdown();
  ports_.application.terminate();
}

void StatusBarController::shutdown() {
  sleepObserver_.reset();
  wakeObserver_.reset();
  processManager_->setOnStatusOutdated(nullptr);
  refreshTimer_.reset();
  processManager_->stopAndWait(kQuitStopTimeout);
}

// Windows

void StatusBarController::openSettings() {
  if (!settingsWindow_ || !settingsWindow_->isVisible()) {
    settingsWindow_ = ports_.formWindows.makeWindow(
        kSettingsWindow,
        std::make_shared<SettingsView>(
            ports_.config,
            SettingsPorts{.loginItem = ports_.loginItem, .userDefaults = ports_.userDefaults},
            whileAlive(&StatusBarController::settingsSaved)));
  }
  settingsWindow_->makeKeyAndOrderFront();
}

void StatusBarController::settingsSaved() {
  if (settingsWindow_) settingsWindow_->close();
  const std::string model = ports_.config.readSettings().model;
  if (weightsExist(model)) {
    restart();
  } else {
    processManager_->stopAndWait(kRestartStopTimeout);
    showDownloadThenRestart(model);
  }
}

bool StatusBarController::weightsExist(const std::string& model) const {
  return ports_.config.weightsExist(model);
}

void StatusBarController::showDownloadThenRestart(const std::string& model) {
  const ModelDownloadPorts downloadPorts = {.bundle = ports_.process.bundle,
                                            .backgroundQueue = ports_.process.backgroundQueue,
                                            .childProcesses = ports_.process.childProcesses,
                                            .mainLoop = ports_.process.mainLoop};
  const auto done = whileAlive(&StatusBarController::downloadDone);
  downloadWindow_ = ports_.formWindows.makeWindow(
      kDownloadWindow,
      ModelDownloadView::create(downloadPorts, model, {.onComplete = done, .onSkip = done}));
  downloadWindow_->makeKeyAndOrderFront();
}

void StatusBarController::downloadDone() {
  if (downloadWindow_) downloadWindow_->close();
  downloadWindow_.reset();
  restart();
}

// Sleep

void StatusBarController::observeSleep() {
  sleepObserver_ = ports_.sleepWatch.onWillSleep([this] { handleSleep(); });
  wakeObserver_ = ports_.sleepWatch.onDidWake([this] { handleWake(); });
}

void StatusBarController::handleSleep() {
  wasRunningBeforeSleep_ = processManager_->state() != AppState::stopped;
  logger_.info(std::string("System sleeping, wasRunning=") +
               (wasRunningBeforeSleep_ ? "true" : "false"));
  processManager_->stopAndWait(kRestartStopTimeout);
  ports_.overlay.hide();
}

void StatusBarController::handleWake() {
  if (!wasRunningBeforeSleep_) return;
  logger_.info("System woke, restarting process after delay");
  wasRunningBeforeSleep_ = false;
  applyIcon(AppState::loading);
  refreshAfter(ports_.process.clock.now());
  ports_.process.mainLoop.postAfter(kLaunchAfterWake, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->processManager_->launch();
  });
}

}  // namespace voxtrel
