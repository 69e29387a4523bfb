#pragma once

#include <optional>
#include <string>
#include <string_view>

struct sd_bus_message;

namespace voxtrel::quillback {

/// The id of our only shortcut.
inline constexpr const char* kShortcutId = "push-to-talk";

/// Appends our shortcut with the trigger that is asked for, as a(sa{sv}).
void appendShortcuts(sd_bus_message& message, std::string_view trigger);

/// The desktop's description of our shortcut's trigger in the a(sa{sv}) that is next, empty if it has
/// none; nothing if our shortcut is not in it.
std::optional<std::string> readTrigger(sd_bus_message& message);
/// The same for the a(sa{sv}) under "shortcuts" in the a{sv} that is next.
std::optional<std::string> triggerEntry(sd_bus_message& message);

}  // namespace voxtrel::quillback
