#include "common/base/OneLine.h"

#include <cstdint>

namespace voxtrel::quillback {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

unsigned byteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

/// How many bytes a character that begins with `first` takes; 0 where none does.
std::size_t lengthAfter(unsigned first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  if (first >= 0xF0 && first < 0xF5) return 4;
  return 0;
}

/// The first byte decides what the second may be, lest a character have two spellings, be half of a
/// surrogate pair or lie beyond U+10FFFF.
bool isSecond(unsigned first, unsigned second) {
  if (first == 0xE0) return second >= 0xA0 && second <= 0xBF;
  if (first == 0xED) return second >= 0x80 && second <= 0x9F;
  if (first == 0xF0) return second >= 0x90 && second <= 0xBF;
  if (first == 0xF4) return second >= 0x80 && second <= 0x8F;
  return second >= 0x80 && second <= 0xBF;
}

/// The bytes of the character at the start of `text`; 0 where that is none.
std::size_t characterLength(std::string_view text) {
  const std::size_t length = lengthAfter(byteAt(text, 0));
  if (length == 0 || length > text.size()) return 0;
  if (length > 1 && !isSecond(byteAt(text, 0), byteAt(text, 1))) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if ((byteAt(text, i) & 0xC0U) != 0x80) return 0;
  }
  return length;
}

/// Control characters, U+0085, U+2028 and U+2029.
bool isBreak(std::string_view character) {
  if (character.size() == 1) return byteAt(character, 0) < 0x20 || byteAt(character, 0) == 0x7F;
  if (character.size() == 2) return byteAt(character, 0) == 0xC2 && byteAt(character, 1) < 0xA0;
  return character == "\xE2\x80\xA8" || character == "\xE2\x80\xA9";
}

}  // namespace

std::string oneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const std::string_view character = text.substr(0, length == 0 ? 1 : length);
    if (length == 0) {
      line += kReplacement;
    } else if (isBreak(character)) {
      line += ' ';
    } else {
      line += character;
    }
    text.remove_prefix(character.size());
  }
  return line;
}

std::string trimmedLine(std::string_view text) {
  const std::string line = oneLine(text);
  const std::size_t first = line.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return line.substr(first, line.find_last_not_of(' ') - first + 1);
}

}  // namespace voxtrel::quillback
