#include "voxtrel/platform/linux/session/UserFolders.h"

#include <unistd.h>

#include <cstdlib>

namespace voxtrel {
namespace {

std::string folderNamedBy(const char* variable, const std::string& home) {
  const char* const value = std::getenv(variable);
  std::string folder = value != nullptr && value[0] == '/' ? value : "";
  if (folder.empty() && !home.empty()) folder = home + "/.config";
  while (folder.ends_with('/')) folder.pop_back();
  return folder;
}

}  // namespace

bool isSandboxed() {
  return ::access(kSandboxMarker, F_OK) == 0;
}

std::string configFolder(const std::string& home) {
  return folderNamedBy("XDG_CONFIG_HOME", home);
}

std::string desktopConfigFolder(const std::string& home, bool sandboxed) {
  return folderNamedBy(sandboxed ? "HOST_XDG_CONFIG_HOME" : "XDG_CONFIG_HOME", home);
}

}  // namespace voxtrel
