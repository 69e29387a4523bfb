#include "voxtrel/platform/linux/LinuxDesktop.h"

#include <QApplication>
#include <QDBusConnection>
#include <csignal>
#include <cstdlib>
#include <memory>

#include "common/base/HomeDirectory.h"
#include "common/posix/Confinement.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"
#include "voxtrel/platform/linux/application/DisplayConnection.h"
#include "voxtrel/platform/linux/application/QtApplication.h"
#include "voxtrel/platform/linux/application/QtMainLoop.h"
#include "voxtrel/platform/linux/dbus/AsyncCall.h"
#include "voxtrel/platform/linux/layershell/SessionOverlayStage.h"
#include "voxtrel/platform/linux/log/OpenLog.h"
#include "voxtrel/platform/linux/notifications/FreedesktopNotifications.h"
#include "voxtrel/platform/linux/overlay/TimerFdFrameTimer.h"
#include "voxtrel/platform/linux/permissions/HelpPages.h"
#include "voxtrel/platform/linux/permissions/SandboxMicrophoneAccess.h"
#include "voxtrel/platform/linux/permissions/SessionKeyTrust.h"
#include "voxtrel/platform/linux/session/AutostartEntry.h"
#include "voxtrel/platform/linux/session/LogindSleepWatch.h"
#include "voxtrel/platform/linux/session/QSettingsUserDefaults.h"
#include "voxtrel/platform/linux/session/RunningInstance.h"
#include "voxtrel/platform/linux/session/SingleInstance.h"
#include "voxtrel/platform/linux/sound/PulseMicrophone.h"
#include "voxtrel/platform/linux/tray/TrayStatusItem.h"
#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/MessageBoxes.h"
#include "voxtrel/platform/linux/windows/QtFormWindows.h"
#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"
#include "voxtrel/platform/posix/PosixScheduling.h"
#include "voxtrel/supervisor/EngineLocation.h"

namespace voxtrel {
namespace {

/// A desktop that follows freedesktop.org's conventions.
/// Thread: the main thread.  Owns: every adapter; each is made after those it uses.
class LinuxDesktop {
 public:
  struct Parts {
    std::unique_ptr<Log> log;
    std::unique_ptr<QApplication> qtApplication;
    std::unique_ptr<SingleInstance> instance;
  };

  LinuxDesktop(Parts parts, const std::string& version, const LinuxPlaces& places);

  const Desktop& ports() const { return ports_; }

 private:
  Parts parts_;
  QtApplication application_;
  QtMainLoop mainLoop_;
  SteadyClock clock_;
  ExecutableFolder bundle_;
  PulseMicrophone microphone_;
  SessionOverlayStage overlayStage_;
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
  PlainVectorMath vectorMath_;
  // After the others, because their threads may call into everything above until they have ended.
  PosixChildProcessLauncher childProcesses_;
  ThreadedBackgroundQueue backgroundQueue_;
  const Desktop ports_;
};

LinuxDesktop::LinuxDesktop(Parts parts, const std::string& version, const LinuxPlaces& places)
    : parts_(std::move(parts)),
      bundle_(executablePath()),
      overlayStage_(*parts_.log),
      microphoneAccess_(mainLoop_, *parts_.log, QDBusConnection::sessionBus(),
                        places.sandboxMarker),
      accessibilityTrust_(
          SessionKeyTrust::sourcesOfThisSession([this] { return binaryPath(bundle_); }),
          notifications_),
      sleepWatch_(*parts_.log),
      statusItem_(notifications_),
      alerts_(colors_),
      formWindows_(colors_),
      loginItem_(desktopConfigFolder(homeDirectory(), isSandboxed()),
                 autostartProgram(startedProgram(executablePath()), isSandboxed())),
      privacySettings_(*parts_.log, HelpPages::folderFor(executablePath()),
                       HelpPages::readerOfThisSession(isSandboxed())),
      userDefaults_(configFolder(homeDirectory())),
      updater_(version),
      ports_{.accessibilityTrust = accessibilityTrust_,
             .alerts = alerts_,
             .application = application_,
             .bundle = bundle_,
             .backgroundQueue = backgroundQueue_,
             .childProcesses = childProcesses_,
             .clock = clock_,
             .formWindows = formWindows_,
             .frameTimer = frameTimer_,
             .log = *parts_.log,
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
             .homeDirectory = homeDirectory()} {
  parts_.instance->setOnRequest([this](StartRequest request) { application_.take(request); });
}

/// No other program of the user may read the words in our memory. Qt may have asked the portal already,
/// which looks at us when it answers: not before it has answered us too are we closed.
void protectWords() {
  protectMemory();
  QDBusMessage call = QDBusMessage::createMethodCall(kPortalService, kPortalObject,
                                                     "org.freedesktop.portal.Settings", "Read");
  call.setAutoStartService(false);
  call << QString("org.freedesktop.appearance") << QString("color-scheme");
  startCall(QDBusConnection::sessionBus(), call, kReplyTimeout);
}

}  // namespace

DesktopConnection connectToLinux(int& argc, char** argv, const std::string& version,
                                 StartRequest request, const LinuxPlaces& places) {
  // The reader of our standard error may go away; that is no reason to end.
  std::signal(SIGPIPE, SIG_IGN);
  if (request == StartRequest::restart || request == StartRequest::quit) {
    return tl::unexpected(passOnAndReport(request, argc, argv));
  }
  LinuxDesktop::Parts parts;
  parts.log = openLog();
  parts.qtApplication = connectToDisplay(argc, argv, version);
  if (!parts.qtApplication) return tl::unexpected(EXIT_FAILURE);
  protectWords();
  parts.instance = std::make_unique<SingleInstance>(*parts.log);
  SingleInstance& instance = *parts.instance;
  const auto desktop = std::make_shared<LinuxDesktop>(std::move(parts), version, places);
  if (!instance.isFirst(request)) return tl::unexpected(EXIT_SUCCESS);
  return std::shared_ptr<const Desktop>(desktop, &desktop->ports());
}

DesktopConnection connectToDesktop(int& argc, char** argv, const std::string& version,
                                   StartRequest request) {
  return connectToLinux(argc, argv, version, request, {});
}

}  // namespace voxtrel
