#pragma once

#include <cstddef>
#include <string_view>

namespace voxtrel {

/// One decoded character.
struct Utf8Character {
  char32_t code = 0;
  std::size_t length = 0;  ///< bytes; 0: no well-formed character
};

/// The character at the start of `text`, which must not be empty. UTF-8 is what RFC 3629 defines: no
/// overlong forms, no surrogates, nothing above U+10FFFF.
/// Fails by: length 0; a caller that continues then skips one byte.
Utf8Character firstCharacter(std::string_view text);

/// Whether words of this character's script stand without blanks between them (Chinese, Japanese,
/// Thai, Lao, Khmer, Burmese).
bool isUnspacedScript(char32_t character);

/// Whether `bytes` consists of well-formed characters only. Empty text does.
bool isValidUtf8(std::string_view bytes);

/// The longest start of well-formed `text` that has at most `maxBytes` and cuts no character.
std::string_view utf8Prefix(std::string_view text, std::size_t maxBytes);

}  // namespace voxtrel
