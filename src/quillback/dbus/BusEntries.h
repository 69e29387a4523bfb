#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sd_bus_message;

namespace voxtrel::quillback {

// The a{sv} in which services of the desktop take options and give results. The readers of variants read
// nothing if it has another type.

/// Appends one entry to an a{sv} that is open.
void appendText(sd_bus_message& message, const char* key, const std::string& text);
void appendNumber(sd_bus_message& message, const char* key, std::uint32_t number);

/// Calls `onEntry` at the variant of each entry of the a{sv} that is next. It returns whether it has read
/// the variant.
using OnEntry = std::function<bool(std::string_view key)>;
void forEntries(sd_bus_message& message, const OnEntry& onEntry);

/// The text or object path of the variant that is next.
std::optional<std::string> readText(sd_bus_message& message);
/// The unsigned number or the boolean, as 0 or 1, of the variant that is next.
std::optional<std::uint32_t> readNumber(sd_bus_message& message);
/// The list of texts of the variant that is next, also one within a structure.
std::optional<std::vector<std::string>> readTexts(sd_bus_message& message);

/// The text under `key` in the a{sv} that is next.
std::optional<std::string> textEntry(sd_bus_message& message, std::string_view key);

}  // namespace voxtrel::quillback
