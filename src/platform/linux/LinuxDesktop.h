#pragma once

#include <memory>
#include <string>

#include "platform/Desktop.h"
#include "platform/kissfft/KissRealFft.h"
#include "platform/linux/AutostartEntry.h"
#include "platform/linux/DesktopColors.h"
#include "platform/linux/FreedesktopNotifications.h"
#include "platform/linux/HelpPages.h"
#include "platform/linux/LogindSleepWatch.h"
#include "platform/linux/PulseMicrophone.h"
#include "platform/linux/QSettingsUserDefaults.h"
#include "platform/linux/QtAlerts.h"
#include "platform/linux/QtApplication.h"
#include "platform/linux/QtFormWindows.h"
#include "platform/linux/QtMainLoop.h"
#include "platform/linux/QtOverlayStage.h"
#include "platform/linux/SandboxMicrophoneAccess.h"
#include "platform/linux/SessionKeyTrust.h"
#include "platform/linux/TimerFdFrameTimer.h"
#include "platform/linux/TrayStatusItem.h"
#include "platform/linux/UpdateNotice.h"
#include "platform/posix/ExecutableFolder.h"
#include "platform/posix/PosixChildProcessLauncher.h"
#include "platform/posix/SteadyClock.h"
#include "platform/posix/ThreadedBackgroundQueue.h"

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
