#include "voxtrel/platform/linux/log/LogFormat.h"

#include <syslog.h>

#include "voxtrel/platform/Desktop.h"

namespace voxtrel {

namespace {

std::string_view levelName(LogLevel level) {
  switch (level) {
    case LogLevel::debug:
      return "debug";
    case LogLevel::info:
      return "info";
    case LogLevel::error:
      return "error";
  }
  return "";
}

int priorityOf(LogLevel level) {
  switch (level) {
    case LogLevel::debug:
      return LOG_DEBUG;
    case LogLevel::info:
      return LOG_INFO;
    case LogLevel::error:
      return LOG_ERR;
  }
  return LOG_INFO;
}

void appendEscaped(std::string& line, char character) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  constexpr unsigned kDelete = 0x7f;
  const auto byte = static_cast<unsigned char>(character);
  if (character == '\n') {
    line += "\\n";
  } else if (character == '\r') {
    line += "\\r";
  } else if ((byte < ' ' && character != '\t') || byte == kDelete) {
    line += "\\x";
    line += kHexDigits[byte >> 4U];
    line += kHexDigits[byte & 0xfU];
  } else {
    line += character;
  }
}

std::string field(std::string_view name, std::string_view value) {
  std::string text(name);
  text += '=';
  text += value;
  return text;
}

}  // namespace

std::string logLine(LogLevel level, std::string_view category, std::string_view message) {
  std::string line = "voxtrel: ";
  line.reserve(line.size() + category.size() + message.size() + 16);
  line += levelName(level);
  line += " [";
  line += category;
  line += "] ";
  for (const char character : message) appendEscaped(line, character);
  line += '\n';
  return line;
}

std::array<std::string, 4> journalFields(LogLevel level, std::string_view category,
                                         std::string_view message) {
  return {field("MESSAGE", message), field("PRIORITY", std::to_string(priorityOf(level))),
          field("SUBSYSTEM", kBundleIdentifier), field("CATEGORY", category)};
}

}  // namespace voxtrel
