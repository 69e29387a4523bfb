#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/settings/ConfigManager.h"
#include "voxtrel/platform/FormWindows.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/platform/StatusItem.h"
#include "voxtrel/platform/Subscription.h"
#include "voxtrel/supervisor/AppState.h"
#include "voxtrel/supervisor/ProcessManager.h"

namespace voxtrel {

class Application;
struct Desktop;
class LoginItem;
class RecordingIndicator;
class SleepWatch;
class Updater;
class UserDefaults;

/// What the controller needs from outside; must outlive the controller.
struct StatusBarPorts {
  static StatusBarPorts of(const Desktop& desktop, RecordingIndicator& overlay);

  ProcessManagerPorts process;
  Application& application;
  ConfigManager config;
  FormWindows& formWindows;
  LoginItem& loginItem;
  RecordingIndicator& overlay;
  SleepWatch& sleepWatch;
  StatusItem& statusItem;
  Updater& updater;
  UserDefaults& userDefaults;
};

/// Shows the engine's status in the status item and its menu, starts and stops the engine for the
/// user and the system, and opens the settings window and the download that may follow.
/// Thread: the main thread.  Owns: the supervisor, the two windows.  Borrows: the ports.
class StatusBarController : public std::enable_shared_from_this<StatusBarController> {
 public:
  /// Builds the menu and starts the engine.
  static std::shared_ptr<StatusBarController> create(const StatusBarPorts& ports);

  const std::shared_ptr<ProcessManager>& processManager() const { return processManager_; }

  /// Brings an open settings window to the front; otherwise opens a new one, which reads the file.
  void openSettings();
  void restart();
  void quit();

  /// Ends timer and observers and stops the engine; after 2 seconds it is killed. May be repeated.
  void shutdown();

 private:
  explicit StatusBarController(const StatusBarPorts& ports);

  void begin();
  void buildMenu();
  std::function<void()> whileAlive(void (StatusBarController::*command)());
  void applyIcon(AppState state);
  void refreshAfter(Clock::TimePoint change);
  void refreshUI();
  void handleStateChange(AppState newState);
  void settingsSaved();
  bool weightsExist(const std::string& model) const;
  void showDownloadThenRestart(const std::string& model);
  void downloadDone();
  void observeSleep();
  void handleSleep();
  void handleWake();

  const StatusBarPorts ports_;
  const Logger logger_;
  const std::shared_ptr<ProcessManager> processManager_;
  std::unique_ptr<FormWindow> settingsWindow_;  ///< the last one, open or closed
  std::unique_ptr<FormWindow> downloadWindow_;
  AppState lastOverlayState_ = AppState::idle;
  bool wasRunningBeforeSleep_ = false;
  Clock::TimePoint lastTick_;  ///< the refresh's clock: every 0.05 s from construction
  Subscription refreshTimer_;
  Subscription sleepObserver_;
  Subscription wakeObserver_;
};

}  // namespace voxtrel
