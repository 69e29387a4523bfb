#include "voxtrel/platform/linux/session/DesktopEntryText.h"

#include <algorithm>

namespace voxtrel {
namespace {

constexpr std::string_view kReserved = " \t\n\"'\\><~|&;$*?#()`";
constexpr std::string_view kEscapedInQuotes = "\"`$\\";
constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kGroup = "[Desktop Entry]";

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// The letter that represents `character` after a backslash, or 0.
char escapeLetter(char character) {
  switch (character) {
    case '\\':
      return '\\';
    case '\n':
      return 'n';
    case '\t':
      return 't';
    case '\r':
      return 'r';
    default:
      return 0;
  }
}

char characterFor(char escapeLetter) {
  switch (escapeLetter) {
    case 's':
      return ' ';
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case 'r':
      return '\r';
    default:
      return escapeLetter;
  }
}

}  // namespace

std::string desktopEntryString(std::string_view value) {
  const auto text = std::min(value.find_first_not_of(' '), value.size());
  std::string escaped;
  // Readers drop leading blanks.
  for (std::size_t i = 0; i < text; ++i) escaped += "\\s";
  for (const char character : value.substr(text)) {
    const char letter = escapeLetter(character);
    if (letter != 0) escaped += '\\';
    escaped += letter != 0 ? letter : character;
  }
  return escaped;
}

std::string desktopEntryCommand(std::string_view program) {
  std::string word;
  for (const char character : program) {
    if (kEscapedInQuotes.find(character) != std::string_view::npos) word += '\\';
    if (character == '%') word += '%';  // a single one would start a field code
    word += character;
  }
  const bool quoted = program.empty() || program.find_first_of(kReserved) != std::string_view::npos;
  return desktopEntryString(quoted ? '"' + word + '"' : word);
}

std::map<std::string, std::string> readDesktopEntry(std::string_view text) {
  std::map<std::string, std::string> entry;
  bool isInGroup = false;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.starts_with('[')) isInGroup = line == kGroup;
    const auto equals = line.find('=');
    if (!isInGroup || line.starts_with('#') || equals == std::string_view::npos) continue;
    entry.insert_or_assign(std::string(trimmed(line.substr(0, equals))),
                           std::string(trimmed(line.substr(equals + 1))));
  }
  return entry;
}

std::string desktopEntryValue(std::string_view escaped) {
  std::string value;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    const bool isEscape = escaped[i] == '\\' && i + 1 < escaped.size();
    value += isEscape ? characterFor(escaped[++i]) : escaped[i];
  }
  return value;
}

}  // namespace voxtrel
