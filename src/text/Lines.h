#pragma once

#include <functional>
#include <string_view>

namespace voxtrel {

/// Splits UTF-8 text at every newline character (U+000A to U+000D, U+0085, U+2028, U+2029) and hands
/// over each piece in order, empty ones included, as a part of `text`.
void forEachLine(std::string_view text, const std::function<void(std::string_view line)>& take);

/// `text` without the whitespace (Unicode general category Zs and the tab, no newlines) at its ends.
std::string_view trimmedWhitespace(std::string_view text);

}  // namespace voxtrel
