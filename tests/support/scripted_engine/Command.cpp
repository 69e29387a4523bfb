#include "support/scripted_engine/Command.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

namespace scripted {
namespace {

constexpr std::string_view kBlanks = " \t";

bool takesArgument(std::string_view name) {
  constexpr std::array<std::string_view, 5> kWithout{"ignore-term", "close-output", "report",
                                                     "log-report", "wait"};
  for (const std::string_view known : kWithout) {
    if (name == known) return false;
  }
  return true;
}

char parseHex(std::string_view digits) {
  unsigned value = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (error != std::errc() || end != digits.data() + 2) throw std::invalid_argument("bad \\x");
  return static_cast<char>(value);
}

}  // namespace

std::string_view takeWord(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
  text.remove_prefix(word.size());
  if (!text.empty()) text.remove_prefix(1);  // the rest may begin with more blanks
  return word;
}

Command parseCommand(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  const std::string_view name = takeWord(line);
  if (name.empty() || name.front() == '#') return {};
  return {std::string(name), std::string(line)};
}

std::vector<Command> parseScript(std::string_view text) {
  std::vector<Command> commands;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    Command command = parseCommand(text.substr(0, length));
    if (!command.name.empty()) commands.push_back(std::move(command));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return commands;
}

std::vector<Command> parseOptions(const std::vector<std::string>& words) {
  std::vector<Command> commands;
  for (auto word = words.begin(); word != words.end(); ++word) {
    if (!word->starts_with("--")) throw std::invalid_argument("unexpected \"" + *word + '"');
    Command command{word->substr(2), ""};
    if (takesArgument(command.name)) {
      if (++word == words.end()) throw std::invalid_argument(command.name + " needs an argument");
      command.argument = *word;
    }
    commands.push_back(std::move(command));
  }
  return commands;
}

unsigned long long parseNumber(std::string_view word) {
  unsigned long long number = 0;
  const char* const end = word.data() + word.size();
  const auto [rest, error] = std::from_chars(word.data(), end, number);
  const std::string_view unit(rest, static_cast<std::size_t>(end - rest));
  if (error != std::errc()) throw std::invalid_argument("not a number: " + std::string(word));
  if (unit.empty()) return number;
  if (unit == "k") return number * 1000;
  if (unit == "M") return number * 1000 * 1000;
  if (unit == "G") return number * 1000 * 1000 * 1000;
  throw std::invalid_argument("not a number: " + std::string(word));
}

std::string unescape(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      result += text[i];
      continue;
    }
    switch (text[++i]) {
      case 'n':
        result += '\n';
        break;
      case 'r':
        result += '\r';
        break;
      case 't':
        result += '\t';
        break;
      case '0':
        result += '\0';
        break;
      case 'x':
        result += parseHex(text.substr(i + 1, 2));
        i += 2;
        break;
      default:
        result += text[i];
    }
  }
  return result;
}

}  // namespace scripted
