#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <tl/expected.hpp>

#include "common/base/SessionKind.h"
#include "common/settings/HotkeyTable.h"
#include "quillback/keys/OwnKeys.h"
#include "quillback/ports/KeyWatch.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// A source of the key that does not ask the desktop.
struct OpenedKeySource {
  std::unique_ptr<KeyWatch> watch;
  tl::expected<std::string, std::string> name;  ///< for people; the error: why no key is seen yet
};

/// What becomes of it later.
struct KeySourceEvents {
  std::function<void()> onKeyboard;  ///< a keyboard came while there was none
  std::function<void()> onLost;      ///< the X server went away
};

/// Opens the best one that works here: X11's events, or the kernel's if there is no X server or it does
/// not report all keys. The error is for people.
[[nodiscard]] tl::expected<OpenedKeySource, std::string> openKeySource(
    SessionKind session, const Hotkey& hotkey, const KeyWatch::Listener& listener, OwnKeys& ownKeys,
    Loop& loop, const KeySourceEvents& events);
inline constexpr const char* kByKeyboards = "the keyboards in /dev/input";

/// How an engine would see the key here, for people; the error says what is missing. Opens nothing
/// that stays open and asks the user nothing.
[[nodiscard]] tl::expected<std::string, std::string> findKeySource(SessionKind session,
                                                                   const Hotkey& hotkey);

/// Whether the desktop's portal has an interface. Waits for its answer.
bool portalHas(const char* interface);

/// What `quillback check` prints about the key: begins with kKeyIsSeen or "key: no, ".
std::string keyLine(const Hotkey& hotkey, const tl::expected<std::string, std::string>& source);
inline constexpr std::string_view kKeyIsSeen = "key: yes, ";

/// Where the running engine takes the commands of `quillback key`; empty without a run-time folder.
std::string keyCommandPath();

/// Notes that the desktop calls `quillback key`, which makes it a way to see the key from then on.
void noteKeyCommand();

/// Whether it was called.
bool isKeyByCommand();
inline constexpr const char* kByCommand = "the command \"quillback key\"";

/// keyLine for a shortcut of the desktop with this trigger, which may be empty.
std::string portalLine(const std::string& trigger);

/// For people: that the key cannot be watched, why and what to do.
std::string noKeySourceText(const Hotkey& hotkey, SessionKind session, const std::string& why);
/// The same for a notification, which may be cut: why comes last.
std::string noKeySourceAdvice(const Hotkey& hotkey, SessionKind session, const std::string& why);

/// Where the server of $DISPLAY will listen if it is on this machine; else empty.
std::string xServerSocket();

}  // namespace voxtrel::quillback
