#include "quillback/dbus/BusEntries.h"

#include <systemd/sd-bus.h>

namespace voxtrel::quillback {
namespace {

/// The signature of what the variant that is next holds; empty if none is next.
std::string variantSignature(sd_bus_message& message) {
  const char* contents = nullptr;
  char type = 0;
  const int result = sd_bus_message_peek_type(&message, &type, &contents);
  return result > 0 && type == 'v' && contents != nullptr ? contents : "";
}

}  // namespace

void appendText(sd_bus_message& message, const char* key, const std::string& text) {
  sd_bus_message_append(&message, "{sv}", key, "s", text.c_str());
}

void appendNumber(sd_bus_message& message, const char* key, std::uint32_t number) {
  sd_bus_message_append(&message, "{sv}", key, "u", number);
}

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

std::optional<std::string> readText(sd_bus_message& message) {
  const std::string signature = variantSignature(message);
  const char* text = nullptr;
  if (signature != "s" && signature != "o") return std::nullopt;
  if (sd_bus_message_read(&message, "v", signature.c_str(), &text) <= 0) return std::nullopt;
  return text;
}

std::optional<std::uint32_t> readNumber(sd_bus_message& message) {
  const std::string signature = variantSignature(message);
  int boolean = 0;
  std::uint32_t number = 0;
  if (signature == "b" && sd_bus_message_read(&message, "v", "b", &boolean) > 0) {
    return boolean != 0 ? 1 : 0;
  }
  if (signature != "u") return std::nullopt;
  if (sd_bus_message_read(&message, "v", "u", &number) <= 0) return std::nullopt;
  return number;
}

std::optional<std::vector<std::string>> readTexts(sd_bus_message& message) {
  const std::string signature = variantSignature(message);
  const bool isInStructure = signature == "(as)";
  if (signature != "as" && !isInStructure) return std::nullopt;
  std::vector<std::string> texts;
  sd_bus_message_enter_container(&message, 'v', signature.c_str());
  if (isInStructure) sd_bus_message_enter_container(&message, 'r', "as");
  sd_bus_message_enter_container(&message, 'a', "s");
  for (const char* text = nullptr; sd_bus_message_read(&message, "s", &text) > 0;) {
    texts.emplace_back(text);
  }
  sd_bus_message_exit_container(&message);
  if (isInStructure) sd_bus_message_exit_container(&message);
  sd_bus_message_exit_container(&message);
  return texts;
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

}  // namespace voxtrel::quillback
