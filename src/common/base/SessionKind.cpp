#include "common/base/SessionKind.h"

#include <cstdlib>
#include <string_view>

namespace voxtrel {
namespace {

std::string_view orEmpty(const char* value) {
  return value == nullptr ? std::string_view() : std::string_view(value);
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

}  // namespace voxtrel
