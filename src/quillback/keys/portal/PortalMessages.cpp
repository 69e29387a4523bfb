#include "quillback/keys/portal/PortalMessages.h"

#include <systemd/sd-bus.h>

#include "quillback/dbus/BusEntries.h"

namespace voxtrel::quillback {

void appendShortcuts(sd_bus_message& message, std::string_view trigger) {
  sd_bus_message_open_container(&message, 'a', "(sa{sv})");
  sd_bus_message_append(&message, "(sa{sv})", kShortcutId, 2, "description", "s", "Hold to dictate",
                        "preferred_trigger", "s", std::string(trigger).c_str());
  sd_bus_message_close_container(&message);
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
