#include "quillback/app/KeySource.h"

#include <utility>

#include "quillback/keys/evdev/EvdevKeyWatch.h"
#include "quillback/keys/x11/XInput2KeyWatch.h"
#include "quillback/loop/EpollLoop.h"

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

tl::expected<std::string, std::string> findKeySource(SessionKind session, const Hotkey& hotkey) {
  EpollLoop loop;
  OwnKeys ownKeys(loop);
  const KeyWatch::Listener listener{[] {}, [] {}, [] {}};
  std::string why;
  if (session != SessionKind::wayland) {
    const auto fromX11 = XInput2KeyWatch::open(hotkey, listener, ownKeys, loop, [] {});
    if (fromX11) return "the X server's raw events";
    why = fromX11.error() + "; ";
  }
  const auto fromKernel = EvdevKeyWatch::open(hotkey, listener, loop, openEvdevKeyboard);
  if (!fromKernel) return tl::unexpected(why + fromKernel.error());
  if ((*fromKernel)->keyboardCount() > 0) return "the keyboards in /dev/input";
  return tl::unexpected(why + "there is no keyboard in /dev/input");
}

std::string noKeySourceLine(const Hotkey& hotkey, const std::string& why) {
  return "[quillback] Accessibility: " + std::string(hotkey.label) + " cannot be watched (" + why +
         "). Run it in an X11 session, or let your user read the keyboards: sudo usermod -aG input "
         "$USER, then log in again.";
}

}  // namespace voxtrel::quillback
