#include "quillback/app/KeySource.h"

#include <utility>

#include "quillback/audio/TakeFolder.h"
#include "quillback/keys/evdev/EvdevKeyWatch.h"
#include "quillback/keys/x11/XInput2KeyWatch.h"
#include "quillback/loop/EpollLoop.h"
#include "quillback/settings/StateFile.h"

namespace voxtrel::quillback {
namespace {

/// Exists once `quillback key` was called.
constexpr std::string_view kCommandNote = "key-by-command";

}  // namespace

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
  if (fromKernel && (*fromKernel)->keyboardCount() > 0) return "the keyboards in /dev/input";
  if (StateFile(kCommandNote).exists()) return "the command \"quillback key\"";
  return tl::unexpected(why +
                        (fromKernel ? "there is no keyboard in /dev/input" : fromKernel.error()));
}

std::string keyLine(const Hotkey& hotkey, const tl::expected<std::string, std::string>& source) {
  const std::string label(hotkey.label);
  if (source) return std::string(kKeyIsSeen) + label + " by " + *source;
  return "key: no, " + label + " cannot be seen: " + source.error();
}

std::string keyCommandPath() {
  const std::string folder = takeFolderPath();
  return folder.empty() ? "" : folder + "/key";
}

void noteKeyCommand() {
  const StateFile note(kCommandNote);
  // Without the note the next start may say that the key cannot be seen.
  if (!note.exists()) static_cast<void>(note.write(""));
}

std::string noKeySourceLine(const Hotkey& hotkey, const std::string& why) {
  return "[quillback] Accessibility: " + std::string(hotkey.label) + " cannot be watched (" + why +
         "). Run it in an X11 session, or let your user read the keyboards: sudo usermod -aG input "
         "$USER, then log in again.";
}

}  // namespace voxtrel::quillback
