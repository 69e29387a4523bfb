#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "quillback/insertion/x11/KeyTable.h"

namespace voxtrel::quillback {

/// What is typed with one set of characters on the spare keys.
struct TypingBatch {
  std::map<std::uint8_t, char32_t> spares;  ///< what each spare key must write; empty: none needed
  std::vector<KeyStroke> strokes;

  bool operator==(const TypingBatch&) const = default;
};

/// The characters of a text that can be typed: one line, without control characters; what is no
/// UTF-8 is left out.
std::u32string typeable(std::string_view text);

/// The key strokes that write `text`. Characters that the layout lacks go to spare keys, as few
/// batches as their number allows; without any spare key such a text cannot be typed: no batch.
std::vector<TypingBatch> planTyping(std::u32string_view text, const KeyTable& table);

}  // namespace voxtrel::quillback
