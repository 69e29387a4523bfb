#include "quillback/app/KeySource.h"

#include <utility>

#include "quillback/keys/evdev/EvdevKeyWatch.h"
#include "quillback/keys/evdev/LibevdevKeyboard.h"
#include "quillback/keys/x11/XInput2KeyWatch.h"

namespace voxtrel::quillback {

KeySource openKeySource(SessionKind session, const Hotkey& hotkey,
                        const KeyWatch::Listener& listener, OwnKeys& ownKeys, Loop& loop,
                        const std::function<void()>& onLost) {
  const auto fromX11 = [&]() -> KeySource {
    auto opened = XInput2KeyWatch::open(hotkey, listener, ownKeys, loop, onLost);
    return {std::move(opened.watch), std::move(opened.why)};
  };
  const auto fromKernel = [&]() -> KeySource {
    auto opened = EvdevKeyWatch::open(hotkey, listener, loop, LibevdevKeyboard::open);
    return {std::move(opened.watch), std::move(opened.why)};
  };
  // A Wayland session's X server sees only the keys that go to X11 windows.
  if (session == SessionKind::wayland) return fromKernel();
  KeySource first = fromX11();
  if (first.watch) return first;
  KeySource second = fromKernel();
  if (second.watch) return second;
  return {nullptr, first.why + "; " + second.why};
}

std::string noKeySourceLine(const Hotkey& hotkey, const std::string& why) {
  return "[quillback] Accessibility: " + std::string(hotkey.label) + " cannot be watched (" + why +
         "). Run it in an X11 session, or let your user read the keyboards: sudo usermod -aG input "
         "$USER, then log in anew.";
}

}  // namespace voxtrel::quillback
