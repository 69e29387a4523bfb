#pragma once

#include <string_view>

namespace voxtrel {

/// What draws the user's desktop, and therefore how much of the keyboard a program may see.
enum class SessionKind { x11, wayland };

/// What a login session says about itself in the environment; null where a variable is not set.
struct SessionVariables {
  const char* display = nullptr;         ///< DISPLAY
  const char* waylandDisplay = nullptr;  ///< WAYLAND_DISPLAY
  const char* sessionType = nullptr;     ///< XDG_SESSION_TYPE
};

/// A session with both displays is a Wayland session: its X server sees only some of the keys.
/// `withoutDisplay` is the result for a session that names neither. The application takes it for
/// Wayland, because there is no X server to ask; the engine tries X11 first and then has a fallback.
SessionKind sessionKind(const SessionVariables& variables, SessionKind withoutDisplay);

/// The kind of the session this process runs in.
/// Thread: any, as long as none changes the environment.
SessionKind currentSessionKind(SessionKind withoutDisplay);

/// The desktops for which we know where things are.
enum class DesktopFamily { gnome, kde, other };

/// `desktops`: separated by colons, as in XDG_CURRENT_DESKTOP; the first known one counts.
DesktopFamily desktopFamily(std::string_view desktops);
/// That of the session this process runs in.
/// Thread: any, as long as none changes the environment.
DesktopFamily currentDesktopFamily();

}  // namespace voxtrel
