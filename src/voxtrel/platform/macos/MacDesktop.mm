#import <Foundation/Foundation.h>

#include <csignal>
#include <cstdio>
#include <memory>

#include "common/base/HomeDirectory.h"
#include "voxtrel/platform/Desktop.h"
#import "voxtrel/platform/macos/application/AppKitApplication.h"
#import "voxtrel/platform/macos/application/RunLoopMainLoop.h"
#import "voxtrel/platform/macos/application/RunLoopTimers.h"
#import "voxtrel/platform/macos/application/SparkleUpdater.h"
#import "voxtrel/platform/macos/log/OsLog.h"
#import "voxtrel/platform/macos/notifications/UserNotificationCenter.h"
#import "voxtrel/platform/macos/overlay/AppKitOverlayStage.h"
#import "voxtrel/platform/macos/permissions/PrivacyPermissions.h"
#import "voxtrel/platform/macos/session/NativePreferences.h"
#import "voxtrel/platform/macos/session/WorkspaceSleepWatch.h"
#import "voxtrel/platform/macos/sound/AudioEngineMicrophone.h"
#import "voxtrel/platform/macos/statusitem/AppKitStatusItem.h"
#import "voxtrel/platform/macos/vdsp/AccelerateMath.h"
#import "voxtrel/platform/macos/windows/AppKitAlerts.h"
#import "voxtrel/platform/macos/windows/AppKitFormWindows.h"
#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"
#include "voxtrel/platform/posix/PosixScheduling.h"

namespace voxtrel {
namespace {

/// The row "Check for Updates..." is the updater's own, where there is one.
AppKitStatusItem::SystemActions actionsOf(const SparkleUpdater& updater) {
  if (updater.controller() == nil) return {};
  return {{Updater::kCheckForUpdates,
           {updater.controller(), NSSelectorFromString(@"checkForUpdates:")}}};
}

/// The Mac's desktop.
/// Thread: the main thread.  Owns: every adapter; each is made after those it uses.
class MacDesktop {
 public:
  explicit MacDesktop(const std::string& version)
      : updater_(SparkleUpdater::controllerClassOfThisBuild(), version) {}

  const Desktop& ports() const { return ports_; }

 private:
  OsLog log_{kBundleIdentifier};
  AppKitApplication application_;
  RunLoopMainLoop mainLoop_;
  RunLoopFrameTimer frameTimer_;
  SteadyClock clock_;
  MainBundle bundle_;
  AccelerateMath vectorMath_;
  AudioEngineMicrophone microphone_;
  AppKitOverlayStage overlayStage_;
  ProcessTrust accessibilityTrust_;
  CaptureAccess microphoneAccess_;
  SettingsPanes privacySettings_;
  UserNotificationCenter notifications_{UserNotificationCenter::centerOfThisBundle(), mainLoop_};
  WorkspaceSleepWatch sleepWatch_;
  SparkleUpdater updater_;
  AppKitStatusItem statusItem_{actionsOf(updater_)};
  AppKitAlerts alerts_;
  AppKitFormWindows formWindows_;
  MainAppLoginItem loginItem_;
  StandardUserDefaults userDefaults_;
  // After the others, because their threads may call into everything above until they have ended.
  PosixChildProcessLauncher childProcesses_;
  ThreadedBackgroundQueue backgroundQueue_;
  const Desktop ports_{.accessibilityTrust = accessibilityTrust_,
                       .alerts = alerts_,
                       .application = application_,
                       .bundle = bundle_,
                       .backgroundQueue = backgroundQueue_,
                       .childProcesses = childProcesses_,
                       .clock = clock_,
                       .formWindows = formWindows_,
                       .frameTimer = frameTimer_,
                       .log = log_,
                       .loginItem = loginItem_,
                       .mainLoop = mainLoop_,
                       .microphone = microphone_,
                       .microphoneAccess = microphoneAccess_,
                       .notifications = notifications_,
                       .overlayStage = overlayStage_,
                       .privacySettings = privacySettings_,
                       .sleepWatch = sleepWatch_,
                       .statusItem = statusItem_,
                       .updater = updater_,
                       .userDefaults = userDefaults_,
                       .vectorMath = vectorMath_,
                       .homeDirectory = homeDirectory()};
};

}  // namespace

DesktopConnection connectToDesktop(int& /*argc*/, char** /*argv*/, const std::string& version,
                                   StartRequest request) {
  // The system starts an application once, but from a terminal there is no way to the one that runs.
  if (request == StartRequest::restart || request == StartRequest::quit) {
    std::fputs("voxtrel: on macOS, choose this in the menu of the application\n", stderr);
    return tl::unexpected(1);
  }
  // The reader of our standard error may go away; that is no reason to end. Nor is a child's guard that
  // somebody has killed.
  std::signal(SIGPIPE, SIG_IGN);
  @autoreleasepool {
    [NSApplication sharedApplication];
    const auto desktop = std::make_shared<MacDesktop>(version);
    return std::shared_ptr<const Desktop>(desktop, &desktop->ports());
  }
}

}  // namespace voxtrel
