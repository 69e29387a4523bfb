#pragma once

#include <string>

namespace voxtrel {

/// A file that exists in every Flatpak sandbox.
inline constexpr const char* kSandboxMarker = "/.flatpak-info";

/// Whether this process runs inside a Flatpak sandbox.
/// Thread: any.
bool isSandboxed();

/// The user's settings folder, without trailing separator: XDG_CONFIG_HOME if it is an absolute path,
/// else `.config` in `home`.
/// Thread: any, as long as none changes the environment.  Fails by: an empty path without a home.
std::string configFolder(const std::string& home);

/// The settings folder that the desktop reads; a sandboxed program's own is a different one.
std::string desktopConfigFolder(const std::string& home, bool sandboxed);

}  // namespace voxtrel
