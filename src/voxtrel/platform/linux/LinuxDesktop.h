#pragma once

#include <memory>
#include <string>

#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/kissfft/KissRealFft.h"
#include "voxtrel/platform/linux/notifications/FreedesktopNotifications.h"
#include "voxtrel/platform/linux/overlay/QtOverlayStage.h"
#include "voxtrel/platform/linux/overlay/TimerFdFrameTimer.h"
#include "voxtrel/platform/linux/permissions/HelpPages.h"
#include "voxtrel/platform/linux/permissions/SandboxMicrophoneAccess.h"
#include "voxtrel/platform/linux/permissions/SessionKeyTrust.h"
#include "voxtrel/platform/linux/session/AutostartEntry.h"
#include "voxtrel/platform/linux/session/LogindSleepWatch.h"
#include "voxtrel/platform/linux/session/QSettingsUserDefaults.h"
#include "voxtrel/platform/linux/session/QtApplication.h"
#include "voxtrel/platform/linux/session/QtMainLoop.h"
#include "voxtrel/platform/linux/sound/PulseMicrophone.h"
#include "voxtrel/platform/linux/tray/TrayStatusItem.h"
#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/QtAlerts.h"
#include "voxtrel/platform/linux/windows/QtFormWindows.h"
#include "voxtrel/platform/linux/windows/UpdateNotice.h"
#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"
#include "voxtrel/platform/posix/SteadyClock.h"
#include "voxtrel/platform/posix/ThreadedBackgroundQueue.h"

class QApplication;

namespace voxtrel {

class SingleInstance;

/// A desktop that follows freedesktop.org's conventions.
/// Thread: the main thread.  Owns: every adapter; what others use is made first.
class LinuxDesktop final : public Desktop {
 public:
  struct Parts {
    std::unique_ptr<Log> log;
    std::unique_ptr<QApplication> qtApplication;
    std::unique_ptr<SingleInstance> instance;
  };

  LinuxDesktop(Parts parts, const std::string& version);
  ~LinuxDesktop() override;

  AccessibilityTrust& accessibilityTrust() override { return accessibilityTrust_; }
  Alerts& alerts() override { return alerts_; }
  Application& application() override { return application_; }
  ApplicationBundle& bundle() override { return bundle_; }
  BackgroundQueue& backgroundQueue() override { return backgroundQueue_; }
  ChildProcessLauncher& childProcesses() override { return childProcesses_; }
  Clock& clock() override { return clock_; }
  FormWindows& formWindows() override { return formWindows_; }
  FrameTimer& frameTimer() override { return frameTimer_; }
  Log& log() override { return *parts_.log; }
  LoginItem& loginItem() override { return loginItem_; }
  MainLoop& mainLoop() override { return mainLoop_; }
  Microphone& microphone() override { return microphone_; }
  MicrophoneAccess& microphoneAccess() override { return microphoneAccess_; }
  Notifications& notifications() override { return notifications_; }
  OverlayStage& overlayStage() override { return overlayStage_; }
  PrivacySettings& privacySettings() override { return privacySettings_; }
  SleepWatch& sleepWatch() override { return sleepWatch_; }
  StatusItem& statusItem() override { return statusItem_; }
  Updater& updater() override { return updater_; }
  UserDefaults& userDefaults() override { return userDefaults_; }
  std::unique_ptr<RealFft> makeRealFft() override { return KissRealFft::make(); }
  std::string homeDirectory() const override { return home_; }

 private:
  const std::string home_;
  Parts parts_;
  QtApplication application_;
  QtMainLoop mainLoop_;
  SteadyClock clock_;
  ExecutableFolder bundle_;
  PulseMicrophone microphone_;
  QtOverlayStage overlayStage_;
  TimerFdFrameTimer frameTimer_;
  SandboxMicrophoneAccess microphoneAccess_;
  FreedesktopNotifications notifications_;
  SessionKeyTrust accessibilityTrust_;
  LogindSleepWatch sleepWatch_;
  TrayStatusItem statusItem_;
  DesktopColors colors_;
  QtAlerts alerts_;
  QtFormWindows formWindows_;
  AutostartEntry loginItem_;
  HelpPages privacySettings_;
  QSettingsUserDefaults userDefaults_;
  UpdateNotice updater_;
  // Last, because their threads may call into everything above until they have ended.
  PosixChildProcessLauncher childProcesses_;
  ThreadedBackgroundQueue backgroundQueue_;
};

}  // namespace voxtrel
