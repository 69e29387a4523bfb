#include "voxtrel/download/SetupOutput.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"

namespace voxtrel {
namespace {

/// The zero of every script; the digits 1 to 9 follow each. The mathematical digits have five.
constexpr std::array<char32_t, 68> kZeros = {
    0x0030,  0x0660,  0x06F0,  0x07C0,  0x0966,  0x09E6,  0x0A66,  0x0AE6,  0x0B66,  0x0BE6,
    0x0C66,  0x0CE6,  0x0D66,  0x0DE6,  0x0E50,  0x0ED0,  0x0F20,  0x1040,  0x1090,  0x17E0,
    0x1810,  0x1946,  0x19D0,  0x1A80,  0x1A90,  0x1B50,  0x1BB0,  0x1C40,  0x1C50,  0xA620,
    0xA8D0,  0xA900,  0xA9D0,  0xA9F0,  0xAA50,  0xABF0,  0xFF10,  0x104A0, 0x10D30, 0x11066,
    0x110F0, 0x11136, 0x111D0, 0x112F0, 0x11450, 0x114D0, 0x11650, 0x116C0, 0x11730, 0x118E0,
    0x11950, 0x11C50, 0x11D50, 0x11DA0, 0x11F50, 0x16A60, 0x16AC0, 0x16B50, 0x1D7CE, 0x1D7D8,
    0x1D7E2, 0x1D7EC, 0x1D7F6, 0x1E140, 0x1E2F0, 0x1E4F0, 0x1E950, 0x1FBF0};
constexpr char32_t kMaxDigit = 9;

constexpr std::string_view kUnit = "MB";
constexpr std::string_view kSpacedUnit = " MB";
constexpr std::string_view kAmountsBegin = "MB /";
constexpr std::string_view kPercentageEnd = "%)";

std::size_t amountCharacterLength(std::string_view text) {
  return text.starts_with('.') ? 1 : decimalDigitLength(text);
}

/// Removes the digits and dots at the start of `text`, possibly none, and returns them.
std::string_view takeAmount(std::string_view& text) {
  const std::string_view whole = text;
  while (const std::size_t length = amountCharacterLength(text)) text.remove_prefix(length);
  return whole.substr(0, whole.size() - text.size());
}

bool take(std::string_view& text, std::string_view literal) {
  if (!text.starts_with(literal)) return false;
  text.remove_prefix(literal.size());
  return true;
}

bool takeAfterBlanks(std::string_view& text, std::string_view literal) {
  text = trimmedLeadingWhitespace(text);
  return take(text, literal);
}

struct Figures {
  std::string_view downloaded;
  std::string_view total;
  std::string_view percentage;
};

/// `text` follows the first amount. An amount always takes all its digits and dots, because neither may
/// follow one. So there is only one way to match, without backtracking.
std::optional<Figures> figuresAfter(std::string_view downloaded, std::string_view text) {
  Figures figures{downloaded, {}, {}};
  if (!takeAfterBlanks(text, kUnit) || !takeAfterBlanks(text, "/")) return std::nullopt;
  text = trimmedLeadingWhitespace(text);
  figures.total = takeAmount(text);
  if (figures.total.empty()) return std::nullopt;
  if (!takeAfterBlanks(text, kUnit) || !takeAfterBlanks(text, "(")) return std::nullopt;
  figures.percentage = takeAmount(text);
  if (figures.percentage.empty() || !take(text, kPercentageEnd)) return std::nullopt;
  return figures;
}

std::optional<Figures> findFigures(std::string_view line) {
  if (line.find(kPercentageEnd) == std::string_view::npos) return std::nullopt;
  while (!line.empty()) {
    const std::string_view amount = takeAmount(line);
    if (amount.empty()) {
      line.remove_prefix(1);
    } else if (const auto figures = figuresAfter(amount, line)) {
      return figures;
    }
  }
  return std::nullopt;
}

/// "5." and ".5" are numbers; "1.2.3", "." and digits other than 0 to 9 are not.
std::optional<double> numberOf(std::string_view text) {
  const std::size_t dot = std::min(text.find('.'), text.size());
  const std::string_view decimals = text.substr(std::min(dot + 1, text.size()));
  std::string number(text.substr(0, dot));
  number += decimals;
  if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) return {};
  // An exponent instead of the decimal point, which depends on the locale.
  number.append("e-").append(std::to_string(decimals.size()));
  return std::strtod(number.c_str(), nullptr);
}

}  // namespace

std::size_t decimalDigitLength(std::string_view text) {
  if (text.empty()) return 0;
  if (static_cast<unsigned char>(text[0]) < 0x80) return text[0] >= '0' && text[0] <= '9' ? 1 : 0;
  const Utf8Character character = firstCharacter(text);
  if (character.length == 0) return 0;
  const auto* after = std::upper_bound(kZeros.begin(), kZeros.end(), character.code);
  if (after == kZeros.begin()) return 0;
  return character.code - *(after - 1) <= kMaxDigit ? character.length : 0;
}

std::optional<SetupProgress> parseProgress(std::string_view line) {
  const std::optional<Figures> figures = findFigures(line);
  if (!figures) return std::nullopt;
  const std::optional<double> percentage = numberOf(figures->percentage);
  if (!percentage) return std::nullopt;
  return SetupProgress{std::string(figures->downloaded).append(kSpacedUnit),
                       std::string(figures->total).append(kSpacedUnit),
                       std::min(*percentage / 100.0, 1.0)};
}

bool isLogged(std::string_view line) {
  return line.find(kAmountsBegin) == std::string_view::npos;
}

}  // namespace voxtrel
