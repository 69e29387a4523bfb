#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "quillback/insertion/x11/KeyTable.h"

namespace voxtrel::quillback {

/// Strokes that share one assignment of the spare keys.
struct TypingBatch {
  std::map<std::uint8_t, char32_t> spares;  ///< what each spare key must write; may be empty
  std::vector<KeyStroke> strokes;

  bool operator==(const TypingBatch&) const = default;
};

/// The text without control characters and invalid UTF-8. A `\n` becomes the character of the Return
/// key, any other newline and the tab a blank.
std::u32string typeable(std::string_view text);

/// The bytes of `text` that are left after `typed` characters of typeable(text).
std::string_view afterTyped(std::string_view text, std::size_t typed);

/// What is typed between two texts in the same window: a blank, unless `before` ends in a newline or
/// `text` begins with a blank, a newline or a closing mark. Nothing if either is empty.
std::string_view separatorBetween(std::string_view before, std::string_view text);

/// The strokes that write `text`. Characters missing from the layout go to spare keys, in as few
/// batches as possible. No batch if the text needs spare keys and there are none.
std::vector<TypingBatch> planTyping(std::u32string_view text, const KeyTable& table);

}  // namespace voxtrel::quillback
