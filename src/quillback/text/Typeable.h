#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// The character of the Return key.
inline constexpr char32_t kReturn = U'\r';

/// The text without control characters and invalid UTF-8. A `\n` becomes the character of the Return
/// key, any other newline and the tab a blank.
std::u32string typeable(std::string_view text);

/// The bytes of `text` that are left after `typed` characters of typeable(text).
std::string_view afterTyped(std::string_view text, std::size_t typed);

/// What is typed between two texts in the same window: a blank, unless `before` ends in a newline or
/// `text` begins with a blank, a newline or a closing mark. Nothing if either is empty.
std::string_view separatorBetween(std::string_view before, std::string_view text);

}  // namespace voxtrel::quillback
