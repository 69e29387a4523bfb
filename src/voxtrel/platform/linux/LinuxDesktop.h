#pragma once

#include <string>

#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/linux/session/UserFolders.h"

namespace voxtrel {

/// Where the Linux desktop looks; a test can choose another place, to refuse and grant permissions.
struct LinuxPlaces {
  std::string sandboxMarker = kSandboxMarker;  ///< if it exists, a portal guards the microphone
};

/// connectToDesktop with this place.
DesktopConnection connectToLinux(int& argc, char** argv, const std::string& version,
                                 StartRequest request, const LinuxPlaces& places);

}  // namespace voxtrel
