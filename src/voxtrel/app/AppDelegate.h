#pragma once

#include <memory>

#include "common/base/Fatal.h"
#include "voxtrel/platform/Alerts.h"
#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/FormWindows.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Permissions.h"
#include "voxtrel/platform/Subscription.h"
#include "voxtrel/supervisor/CrashRecovery.h"

namespace voxtrel {

struct Desktop;
class RecordingIndicator;
class StatusBarController;

/// Prepares what the engine needs (model and permissions), then creates the menu-bar controller,
/// which starts the engine. Stops the engine when the application ends.
/// Thread: the main thread.  Owns: the controller, the crash-notification delegate, the setup window.
/// Borrows: the desktop and the overlay (must outlive this).
/// Fails by: an alert about the missing permission, then the end of the application.
class AppDelegate : public ApplicationDelegate, public std::enable_shared_from_this<AppDelegate> {
 public:
  /// Starts nothing. The delegate must be held by a shared_ptr.
  AppDelegate(const Desktop& desktop, RecordingIndicator& overlay);

  void applicationDidFinishLaunching() override;
  void applicationWillTerminate() override;
  void quitRequested() override;
  void reopenRequested() override;
  void settingsRequested() override;
  void restartRequested() override;

 private:
  bool checkWeightsExist() const;
  void showModelDownload();
  void modelDownloadDone();
  void requestPermissionsThenLaunch();
  void continueWith(bool microphoneGranted, bool trusted);
  void waitForAccessibility();
  void pollAccessibility();
  void openGate();
  void showMicDeniedAlert();
  void showAccessibilityTimeoutAlert();
  void showPermissionAlert(const Alert& alert, PrivacyPane pane);

  const Desktop& desktop_;
  RecordingIndicator& overlay_;
  const Logger logger_;
  std::shared_ptr<StatusBarController> statusBar_;
  std::unique_ptr<FormWindow> downloadWindow_;
  bool wantsSettings_ = false;  ///< once the gate is open
  Subscription accessibilityTimer_;
  CheckedCounter accessibilityPollCount_;
  const std::shared_ptr<CrashNotificationDelegate> crashNotificationDelegate_;
};

}  // namespace voxtrel
