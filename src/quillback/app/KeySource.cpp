#include "quillback/app/KeySource.h"

#include <chrono>
#include <cstdlib>
#include <utility>

#include "quillback/audio/TakeFolder.h"
#include "quillback/keys/evdev/EvdevKeyWatch.h"
#include "quillback/keys/portal/PortalKey.h"
#include "quillback/keys/x11/XInput2KeyWatch.h"
#include "quillback/loop/EpollLoop.h"
#include "quillback/settings/StateFile.h"

namespace voxtrel::quillback {
namespace {

/// Exists once `quillback key` was called.
constexpr std::string_view kCommandNote = "key-by-command";
constexpr const char* kByPortal = "the desktop's global shortcuts";
/// A portal that is started for the question may take this long.
constexpr std::chrono::seconds kPortalTime{5};

std::string wayToKey(SessionKind session) {
  const std::string way = session == SessionKind::wayland
                              ? "Let your desktop run \"quillback key press\" and \"quillback key "
                                "release\" at a key"
                              : "Run it in an X11 session";
  return way +
         ", or let your user read the keyboards: sudo usermod -aG input $USER, then log in again.";
}

}  // namespace

tl::expected<OpenedKeySource, std::string> openKeySource(SessionKind session, const Hotkey& hotkey,
                                                         const KeyWatch::Listener& listener,
                                                         OwnKeys& ownKeys, Loop& loop,
                                                         const KeySourceEvents& events) {
  // A Wayland session's X server sees only the keys that go to X11 windows.
  std::string why;
  if (session != SessionKind::wayland) {
    auto fromX11 = XInput2KeyWatch::open(hotkey, listener, ownKeys, loop, events.onLost);
    if (fromX11) return OpenedKeySource{std::move(*fromX11), "the X server's raw events"};
    why = fromX11.error() + "; ";
  }
  auto fromKernel =
      EvdevKeyWatch::open(hotkey, listener, loop, openEvdevKeyboard, events.onKeyboard);
  if (!fromKernel) return tl::unexpected(why + fromKernel.error());
  OpenedKeySource opened{nullptr, kByKeyboards};
  if ((*fromKernel)->keyboardCount() == 0) {
    opened.name = tl::unexpected(why + (*fromKernel)->whyNone());
  }
  opened.watch = std::move(*fromKernel);
  return opened;
}

tl::expected<std::string, std::string> findKeySource(SessionKind session, const Hotkey& hotkey) {
  if (session == SessionKind::wayland && portalHas(PortalKey::kInterface)) return kByPortal;
  EpollLoop loop;
  OwnKeys ownKeys(loop);
  const auto source =
      openKeySource(session, hotkey, {[] {}, [] {}, [] {}}, ownKeys, loop, {[] {}, [] {}});
  if (source && source->name) return source->name;
  if (isKeyByCommand()) return kByCommand;
  return tl::unexpected(source ? source->name.error() : source.error());
}

bool portalHas(const char* interface) {
  EpollLoop loop;
  bool hasIt = false;
  const auto portal = Portal::ask(interface, loop, [&](bool has) {
    hasIt = has;
    loop.stop();
  });
  if (!portal) return false;
  const auto limit = loop.after(kPortalTime, [&] { loop.stop(); });
  loop.run();
  return hasIt;
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

bool isKeyByCommand() {
  return StateFile(kCommandNote).exists();
}

std::string portalLine(const std::string& trigger) {
  const std::string key = trigger.empty() ? "a key of the desktop's settings" : trigger;
  return std::string(kKeyIsSeen) + key + " by " + kByPortal;
}

std::string noKeySourceText(const Hotkey& hotkey, SessionKind session, const std::string& why) {
  return std::string(hotkey.label) + " cannot be watched (" + why + "). " + wayToKey(session);
}

std::string noKeySourceAdvice(const Hotkey& hotkey, SessionKind session, const std::string& why) {
  return std::string(hotkey.label) + " cannot be watched. " + wayToKey(session) + " (" + why + ")";
}

std::string xServerSocket() {
  const char* const display = std::getenv("DISPLAY");
  std::string_view name = display == nullptr ? "" : display;
  if (name.starts_with("unix:")) name.remove_prefix(4);
  if (!name.starts_with(':')) return "";
  const std::string_view number = name.substr(1, name.find('.') - 1);
  const bool isNumber = number.find_first_not_of("0123456789") == std::string_view::npos;
  return number.empty() || !isNumber ? "" : "/tmp/.X11-unix/X" + std::string(number);
}

}  // namespace voxtrel::quillback
