#pragma once

#include <functional>
#include <memory>
#include <string>

#include "engine/AppState.h"
#include "engine/ProcessManager.h"
#include "platform/Log.h"
#include "platform/StatusItem.h"
#include "platform/Subscription.h"

namespace voxtrel {

class Application;
class RecordingOverlay;
class SettingsPresenter;
class SleepWatch;
class Updater;

/// What the controller needs from outside; all of it must outlive the controller.
struct StatusBarPorts {
  ProcessManagerPorts process;
  Application& application;
  RecordingOverlay& overlay;
  SettingsPresenter& settings;
  SleepWatch& sleepWatch;
  StatusItem& statusItem;
  Updater& updater;
};

/// Shows the engine's state in the status item and its menu, and starts and stops the engine when
/// the user or the system says so.
/// Thread: the main thread.  Owns: the supervisor.  Borrows: the ports.
class StatusBarController : public std::enable_shared_from_this<StatusBarController> {
 public:
  /// Builds the menu and starts the engine.
  static std::shared_ptr<StatusBarController> create(const StatusBarPorts& ports);

  const std::shared_ptr<ProcessManager>& processManager() const { return processManager_; }

  void openSettings();
  void restart();
  void quit();

  /// Ends timer and observers and stops the engine, waiting 2 seconds at most before it is killed.
  /// Harmless when repeated.
  void shutdown();

 private:
  explicit StatusBarController(const StatusBarPorts& ports);

  void begin();
  void buildMenu();
  std::function<void()> menuAction(void (StatusBarController::*command)());
  void applyIcon(AppState state);
  void refreshUI();
  void handleStateChange(AppState newState);
  void observeSleep();
  void handleSleep();
  void handleWake();

  const StatusBarPorts ports_;
  const Logger logger_;
  const std::shared_ptr<ProcessManager> processManager_;
  AppState lastOverlayState_ = AppState::idle;
  bool wasRunningBeforeSleep_ = false;
  Subscription refreshTimer_;
  Subscription sleepObserver_;
  Subscription wakeObserver_;
};

}  // namespace voxtrel
