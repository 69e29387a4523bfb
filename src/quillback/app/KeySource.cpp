#include "quillback/app/KeySource.h"

#include <utility>

#include "quillback/keys/evdev/EvdevKeyWatch.h"
#include "quillback/keys/x11/XInput2KeyWatch.h"

namespace voxtrel::quillback {

tl::expected<std::unique_ptr<KeyWatch>, std::string> openKeySource(
    SessionKind session, const Hotkey& hotkey, const KeyWatch::Listener& listener, OwnKeys& ownKeys,
    Loop& loop, const std::function<void()>& onLost) {
  // A Wayland session's X server sees only the keys that go to X11 windows.
  std::string why;
  if (session != SessionKind::wayland) {
    auto fromX11 = XInput2KeyWatch::open(hotkey, listener, ownKeys, loop, onLost);
    if (fromX11) return fromX11;
    why = fromX11.error() + "; ";
  }
  auto fromKernel = EvdevKeyWatch::open(hotkey, listener, loop, openEvdevKeyboard);
  if (fromKernel) return fromKernel;
  return tl::unexpected(why + fromKernel.error());
}

std::string noKeySourceLine(const Hotkey& hotkey, const std::string& why) {
  return "[quillback] Accessibility: " + std::string(hotkey.label) + " cannot be watched (" + why +
         "). Run it in an X11 session, or let your user read the keyboards: sudo usermod -aG input "
         "$USER, then log in again.";
}

}  // namespace voxtrel::quillback
