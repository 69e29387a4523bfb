#include "quillback/keys/portal/PortalMessages.h"

#include <systemd/sd-bus.h>

#include <functional>

namespace voxtrel::quillback {
namespace {

using OnEntry = std::function<bool(std::string_view key)>;

/// Calls `onEntry` at the variant of each entry of the a{sv} that is next. It returns whether it has read
/// the variant.
void forEntries(sd_bus_message& message, const OnEntry& onEntry) {
  if (sd_bus_message_enter_container(&message, 'a', "{sv}") <= 0) return;
  while (sd_bus_message_enter_container(&message, 'e', "sv") > 0) {
    const char* key = nullptr;
    if (sd_bus_message_read(&message, "s", &key) <= 0) break;
    if (!onEntry(key)) sd_bus_message_skip(&message, "v");
    sd_bus_message_exit_container(&message);
  }
  sd_bus_message_exit_container(&message);
}

/// The text or object path of the variant that is next.
std::optional<std::string> readText(sd_bus_message& message) {
  const char* contents = nullptr;
  char type = 0;
  const char* text = nullptr;
  if (sd_bus_message_peek_type(&message, &type, &contents) <= 0 || contents == nullptr) {
    return std::nullopt;
  }
  const std::string_view signature(contents);
  if (signature != "s" && signature != "o") return std::nullopt;
  if (sd_bus_message_read(&message, "v", contents, &text) <= 0) return std::nullopt;
  return text;
}

}  // namespace

void appendEntry(sd_bus_message& message, const char* key, const std::string& text) {
  sd_bus_message_append(&message, "{sv}", key, "s", text.c_str());
}

void appendShortcuts(sd_bus_message& message, std::string_view trigger) {
  sd_bus_message_open_container(&message, 'a', "(sa{sv})");
  sd_bus_message_append(&message, "(sa{sv})", kShortcutId, 2, "description", "s", "Hold to dictate",
                        "preferred_trigger", "s", std::string(trigger).c_str());
  sd_bus_message_close_container(&message);
}

std::optional<std::string> textEntry(sd_bus_message& message, std::string_view key) {
  std::optional<std::string> found;
  forEntries(message, [&](std::string_view name) {
    if (name != key) return false;
    found = readText(message);
    return found.has_value();
  });
  return found;
}

std::optional<std::string> readTrigger(sd_bus_message& message) {
  std::optional<std::string> found;
  if (sd_bus_message_enter_container(&message, 'a', "(sa{sv})") <= 0) return found;
  while (sd_bus_message_enter_container(&message, 'r', "sa{sv}") > 0) {
    const char* id = nullptr;
    if (sd_bus_message_read(&message, "s", &id) <= 0) break;
    const auto trigger = textEntry(message, "trigger_description");
    if (std::string_view(id) == kShortcutId) found = trigger.value_or("");
    sd_bus_message_exit_container(&message);
  }
  sd_bus_message_exit_container(&message);
  return found;
}

std::optional<std::string> triggerEntry(sd_bus_message& message) {
  std::optional<std::string> found;
  forEntries(message, [&](std::string_view name) {
    if (name != "shortcuts") return false;
    if (sd_bus_message_enter_container(&message, 'v', "a(sa{sv})") <= 0) return false;
    found = readTrigger(message);
    sd_bus_message_exit_container(&message);
    return true;
  });
  return found;
}

}  // namespace voxtrel::quillback
