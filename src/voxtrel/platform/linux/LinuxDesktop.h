#pragma once

#include <functional>
#include <string>

#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/linux/permissions/KeyboardNodes.h"
#include "voxtrel/platform/linux/session/UserFolders.h"

namespace voxtrel {

/// Where the Linux desktop looks; a test can choose other places, to refuse and grant permissions.
struct LinuxPlaces {
  std::string sandboxMarker = kSandboxMarker;  ///< if it exists, a portal guards the microphone
  std::function<bool()> canReadKeyboard = [] { return voxtrel::canReadKeyboard(); };
};

/// connectToDesktop with these places.
DesktopConnection connectToLinux(int& argc, char** argv, const std::string& version,
                                 const LinuxPlaces& places);

}  // namespace voxtrel
