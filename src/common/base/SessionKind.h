#pragma once

namespace voxtrel {

/// Who draws the user's desktop, and so who decides what a program may see of the keyboard.
enum class SessionKind { x11, wayland };

/// What a login session says of itself in the environment; null where it says nothing.
struct SessionVariables {
  const char* display = nullptr;         ///< DISPLAY
  const char* waylandDisplay = nullptr;  ///< WAYLAND_DISPLAY
  const char* sessionType = nullptr;     ///< XDG_SESSION_TYPE
};

/// A session that has both displays is Wayland's, and its X server sees only part of the keys.
/// Without any display the rules of Wayland hold too: there is no X server to ask.
SessionKind sessionKind(const SessionVariables& variables);

/// The kind of the session that this process runs in.
/// Thread: any, as long as none changes the environment.
SessionKind currentSessionKind();

}  // namespace voxtrel
