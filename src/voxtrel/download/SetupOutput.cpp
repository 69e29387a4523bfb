#include "voxtrel/download/SetupOutput.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include "common/base/Lines.h"
#include "voxtrel/download/DecimalDigits.h"

namespace voxtrel {
namespace {

constexpr std::string_view kUnit = "MB";
constexpr std::string_view kSpacedUnit = " MB";
constexpr std::string_view kAmountsBegin = "MB /";
constexpr std::string_view kPercentageEnd = "%)";

std::size_t amountCharacterLength(std::string_view text) {
  return text.starts_with('.') ? 1 : decimalDigitLength(text);
}

/// The digits and dots that `text` begins with, perhaps none, which are taken from it.
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

/// What the line says from one amount on.
struct Figures {
  std::string_view downloaded;
  std::string_view total;
  std::string_view percentage;
};

/// `text` is what follows the first amount. No amount can be shorter than its digits and dots go,
/// since neither may stand after an amount: there is one way to match, and no going back.
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

/// A number too large for its type is infinite, one too small is nothing.
double outOfRange(std::string_view digits) {
  const std::string_view whole = digits.substr(0, digits.find('.'));
  const bool isLarge = whole.find_first_not_of('0') != std::string_view::npos;
  return isLarge ? std::numeric_limits<double>::infinity() : 0.0;
}

/// "5." and ".5" are numbers; "1.2.3", "." and digits other than 0 to 9 are not.
std::optional<double> numberOf(std::string_view text) {
  double number = 0.0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (error == std::errc::invalid_argument || stop != end) return std::nullopt;
  return error == std::errc::result_out_of_range ? outOfRange(text) : number;
}

}  // namespace

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
