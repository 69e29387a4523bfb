#pragma once

#include <string>

namespace voxtrel {

/// The file that Flatpak puts into every sandbox.
inline constexpr const char* kSandboxMarker = "/.flatpak-info";

/// Whether this process runs inside a sandbox of Flatpak's.
/// Thread: any.
bool isSandboxed();

/// The user's folder for settings, without trailing separator: XDG_CONFIG_HOME if that is an
/// absolute path, else `.config` in `home`.
/// Thread: any, as long as none changes the environment.  Fails by: empty text without a home.
std::string configFolder(const std::string& home);

/// The same for files that the desktop reads: a sandbox has a folder for settings of its own.
std::string desktopConfigFolder(const std::string& home, bool sandboxed);

}  // namespace voxtrel
