#include "common/base/Lines.h"

#include <algorithm>
#include <array>

namespace voxtrel {
namespace {

constexpr std::string_view kNextLine = "\xC2\x85";                // U+0085
constexpr std::string_view kLineSeparator = "\xE2\x80\xA8";       // U+2028
constexpr std::string_view kParagraphSeparator = "\xE2\x80\xA9";  // U+2029

/// Bytes of the newline character at `position`, 0 if there is none.
std::size_t newlineLengthAt(std::string_view text, std::size_t position) {
  const char first = text[position];
  if (first >= '\n' && first <= '\r') return 1;
  if (first != kNextLine[0] && first != kLineSeparator[0]) return 0;
  const std::string_view rest = text.substr(position);
  if (rest.starts_with(kNextLine)) return kNextLine.size();
  if (rest.starts_with(kLineSeparator)) return kLineSeparator.size();
  return rest.starts_with(kParagraphSeparator) ? kParagraphSeparator.size() : 0;
}

bool endsInNewline(std::string_view text) {
  const char last = text.back();
  if (last >= '\n' && last <= '\r') return true;
  if (last == kNextLine.back()) return text.ends_with(kNextLine);
  return text.ends_with(kLineSeparator) || text.ends_with(kParagraphSeparator);
}

/// Where the first newline character at or after `from` begins; the text's size if there is none.
std::size_t newlineFrom(std::string_view text, std::size_t from) {
  while (from < text.size() && newlineLengthAt(text, from) == 0) ++from;
  return from;
}

/// Bytes of the whitespace character at the start of `text`, 0 if there is none.
std::size_t whitespaceLength(std::string_view text) {
  if (text.empty()) return 0;
  if (text[0] == ' ' || text[0] == '\t') return 1;
  if (text.starts_with("\xC2\xA0")) return 2;  // U+00A0
  if (text.size() < 3) return 0;
  if (text.starts_with("\xE2\x80")) {
    const auto third = static_cast<unsigned char>(text[2]);
    return third <= 0x8A || third == 0xAF ? 3 : 0;  // U+2000 to U+200A, U+202F
  }
  constexpr std::array<std::string_view, 3> kOthers = {"\xE1\x9A\x80", "\xE2\x81\x9F",
                                                       "\xE3\x80\x80"};  // U+1680, U+205F, U+3000
  return std::ranges::find(kOthers, text.substr(0, 3)) != kOthers.end() ? 3 : 0;
}

/// Bytes of the whitespace character at the end of `text`, 0 if there is none.
std::size_t whitespaceLengthAtEnd(std::string_view text) {
  for (std::size_t length = 1; length <= 3 && length <= text.size(); ++length) {
    if (whitespaceLength(text.substr(text.size() - length)) == length) return length;
  }
  return 0;
}

}  // namespace

void forEachLine(std::string_view text, const std::function<void(std::string_view line)>& take) {
  std::size_t begin = 0;
  for (std::size_t end = newlineFrom(text, 0); end < text.size(); end = newlineFrom(text, begin)) {
    take(text.substr(begin, end - begin));
    begin = end + newlineLengthAt(text, end);
  }
  take(text.substr(begin));
}

std::string_view lineAround(std::string_view text, std::size_t position) {
  std::size_t begin = position;
  while (begin > 0 && !endsInNewline(text.substr(0, begin))) --begin;
  return text.substr(begin, newlineFrom(text, position) - begin);
}

std::string_view trimmedLeadingWhitespace(std::string_view text) {
  while (const std::size_t length = whitespaceLength(text)) text.remove_prefix(length);
  return text;
}

std::string_view trimmedWhitespace(std::string_view text) {
  text = trimmedLeadingWhitespace(text);
  while (const std::size_t length = whitespaceLengthAtEnd(text)) text.remove_suffix(length);
  return text;
}

}  // namespace voxtrel
