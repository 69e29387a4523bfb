#include "common/base/Lines.h"

#include <algorithm>

#include "common/base/Utf8.h"

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

bool isWhitespaceBeyondAscii(char32_t c) {
  constexpr std::u32string_view kOthers = U"\u00A0\u1680\u202F\u205F\u3000";
  return (c >= 0x2000 && c <= 0x200A) || kOthers.find(c) != std::u32string_view::npos;
}

/// Control characters and all newline characters.
bool isBreak(char32_t c) {
  return c < U' ' || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

bool isAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

/// Bytes of the whitespace character at the start of `text`, 0 if there is none.
std::size_t whitespaceLength(std::string_view text) {
  if (text.empty()) return 0;
  if (isAscii(text.front())) return text.front() == ' ' || text.front() == '\t' ? 1 : 0;
  const Utf8Character first = firstCharacter(text);
  return isWhitespaceBeyondAscii(first.code) ? first.length : 0;
}

/// Bytes of the whitespace character at the end of `text`, 0 if there is none.
std::size_t whitespaceLengthAtEnd(std::string_view text) {
  if (!text.empty() && isAscii(text.back())) return whitespaceLength(text.substr(text.size() - 1));
  for (std::size_t length = 1; length <= 3 && length <= text.size(); ++length) {
    if (whitespaceLength(text.substr(text.size() - length)) == length) return length;
  }
  return 0;
}

}  // namespace

void forEachLine(std::string_view text, const std::function<void(std::string_view line)>& apply) {
  std::size_t begin = 0;
  for (std::size_t end = newlineFrom(text, 0); end < text.size(); end = newlineFrom(text, begin)) {
    apply(text.substr(begin, end - begin));
    begin = end + newlineLengthAt(text, end);
  }
  apply(text.substr(begin));
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

std::string oneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    const Utf8Character first = firstCharacter(text);
    if (first.length == 0) {
      line += "\uFFFD";
    } else if (isBreak(first.code)) {
      line += ' ';
    } else {
      line += text.substr(0, first.length);
    }
    text.remove_prefix(std::max<std::size_t>(first.length, 1));
  }
  return line;
}

std::string trimmedOneLine(std::string_view text) {
  const std::string line = oneLine(text);
  const std::size_t first = line.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return line.substr(first, line.find_last_not_of(' ') - first + 1);
}

}  // namespace voxtrel
