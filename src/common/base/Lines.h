#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace voxtrel {

/// Splits UTF-8 text at every newline character (U+000A to U+000D, U+0085, U+2028, U+2029) and
/// calls `apply` with each piece in order, empty ones included, as a part of `text`. Empty text is
/// one empty piece. Bytes that are not UTF-8 are part of the piece around them.
void forEachLine(std::string_view text, const std::function<void(std::string_view line)>& apply);

/// The piece of forEachLine that holds the byte at `position`, which must exist and not belong to a
/// newline character.
std::string_view lineAround(std::string_view text, std::size_t position);

/// `text` without whitespace (Unicode general category Zs and the tab, no newlines) at both ends.
std::string_view trimmedWhitespace(std::string_view text);

/// The same, at the beginning only.
std::string_view trimmedLeadingWhitespace(std::string_view text);

/// `text` as one line of valid UTF-8: each newline or control character becomes a blank, and each
/// byte that is not UTF-8 becomes U+FFFD, because the application drops a chunk with such a byte.
std::string oneLine(std::string_view text);

/// The same without blanks at both ends.
std::string trimmedOneLine(std::string_view text);

}  // namespace voxtrel
