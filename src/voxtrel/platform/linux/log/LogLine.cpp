#include "voxtrel/platform/linux/log/LogLine.h"

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

LogVerbosity LogVerbosity::parse(const char* value) {
  const std::string_view wanted = value == nullptr ? "" : value;
  if (wanted == "debug") return {LogLevel::debug, std::nullopt};
  if (wanted.empty() || wanted == "info") return {};
  return {LogLevel::info, R"(VOXTREL_LOG has the unknown value ")" + std::string(wanted) +
                              R"("; known are "debug" and "info")"};
}

bool namesStream(const char* value, unsigned long long device, unsigned long long inode) {
  return value != nullptr && value == std::to_string(device) + ":" + std::to_string(inode);
}

}  // namespace voxtrel
