#include "common/base/SessionKind.h"

#include <algorithm>
#include <cstdlib>

namespace voxtrel {
namespace {

std::string_view orEmpty(const char* value) {
  return value == nullptr ? std::string_view() : std::string_view(value);
}

bool isSameName(std::string_view name, std::string_view upperCase) {
  const auto isSame = [](char letter, char upper) {
    const bool isLower = letter >= 'a' && letter <= 'z';
    return (isLower ? static_cast<char>(letter - 'a' + 'A') : letter) == upper;
  };
  return std::equal(name.begin(), name.end(), upperCase.begin(), upperCase.end(), isSame);
}

}  // namespace

SessionKind sessionKind(const SessionVariables& variables, SessionKind withoutDisplay) {
  const bool isWayland =
      !orEmpty(variables.waylandDisplay).empty() || orEmpty(variables.sessionType) == "wayland";
  if (isWayland) return SessionKind::wayland;
  return orEmpty(variables.display).empty() ? withoutDisplay : SessionKind::x11;
}

SessionKind currentSessionKind(SessionKind withoutDisplay) {
  return sessionKind({.display = std::getenv("DISPLAY"),
                      .waylandDisplay = std::getenv("WAYLAND_DISPLAY"),
                      .sessionType = std::getenv("XDG_SESSION_TYPE")},
                     withoutDisplay);
}

DesktopFamily desktopFamily(std::string_view desktops) {
  while (!desktops.empty()) {
    const std::size_t length = std::min(desktops.find(':'), desktops.size());
    const std::string_view name = desktops.substr(0, length);
    if (isSameName(name, "GNOME")) return DesktopFamily::gnome;
    if (isSameName(name, "KDE")) return DesktopFamily::kde;
    desktops.remove_prefix(std::min(length + 1, desktops.size()));
  }
  return DesktopFamily::other;
}

DesktopFamily currentDesktopFamily() {
  return desktopFamily(orEmpty(std::getenv("XDG_CURRENT_DESKTOP")));
}

}  // namespace voxtrel
