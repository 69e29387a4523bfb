#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace voxtrel {

/// Splits UTF-8 text at every newline character (U+000A to U+000D, U+0085, U+2028, U+2029) and
/// hands over each piece in order, empty ones included, as a part of `text`. Empty text is one
/// empty piece. Bytes that are not UTF-8 belong to the piece they stand in.
void forEachLine(std::string_view text, const std::function<void(std::string_view line)>& take);

/// The piece, as forEachLine cuts them, that holds the byte at `position`. That byte must exist and
/// be no part of a newline character.
std::string_view lineAround(std::string_view text, std::size_t position);

/// `text` without the whitespace (Unicode general category Zs and the tab, no newlines) at its
/// ends.
std::string_view trimmedWhitespace(std::string_view text);

/// The same, at the beginning only.
std::string_view trimmedLeadingWhitespace(std::string_view text);

}  // namespace voxtrel
