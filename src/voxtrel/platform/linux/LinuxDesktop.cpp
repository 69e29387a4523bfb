#include "voxtrel/platform/linux/LinuxDesktop.h"

#include <QApplication>
#include <QDBusConnection>
#include <csignal>
#include <cstdlib>

#include "common/base/HomeDirectory.h"
#include "voxtrel/platform/linux/log/OpenLog.h"
#include "voxtrel/platform/linux/session/DisplayConnection.h"
#include "voxtrel/platform/linux/session/SingleInstance.h"
#include "voxtrel/platform/linux/session/UserFolders.h"
#include "voxtrel/platform/posix/ExecutablePath.h"

namespace voxtrel {

LinuxDesktop::LinuxDesktop(Parts parts, const std::string& version)
    : home_(voxtrel::homeDirectory()),
      parts_(std::move(parts)),
      bundle_(executablePath()),
      microphoneAccess_(mainLoop_, *parts_.log, QDBusConnection::sessionBus(), kSandboxMarker),
      accessibilityTrust_(SessionKeyTrust::sourcesOfThisSession(), notifications_),
      sleepWatch_(*parts_.log),
      alerts_(colors_),
      formWindows_(colors_),
      loginItem_(desktopConfigFolder(home_, isSandboxed()),
                 autostartProgram(startedProgram(executablePath()), isSandboxed())),
      privacySettings_(*parts_.log, HelpPages::folderFor(executablePath()),
                       HelpPages::readerOfThisSession(isSandboxed())),
      userDefaults_(configFolder(home_)),
      updater_(version) {}

LinuxDesktop::~LinuxDesktop() = default;

DesktopConnection connectToDesktop(int& argc, char** argv, const std::string& version) {
  // Whoever reads our standard error may go away; that is no reason to end.
  std::signal(SIGPIPE, SIG_IGN);
  LinuxDesktop::Parts parts;
  parts.log = openLog();
  parts.qtApplication = connectToDisplay(argc, argv, version);
  if (!parts.qtApplication) return {nullptr, EXIT_FAILURE};
  parts.instance = std::make_unique<SingleInstance>(*parts.log);
  SingleInstance& instance = *parts.instance;
  auto desktop = std::make_unique<LinuxDesktop>(std::move(parts), version);
  if (!instance.isFirst()) return {nullptr, EXIT_SUCCESS};
  return {std::move(desktop), EXIT_SUCCESS};
}

}  // namespace voxtrel
