#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "quillback/insertion/x11/KeyTable.h"
#include "quillback/text/Typeable.h"

namespace voxtrel::quillback {

/// What a spare key must write without and with Shift; twice the same if it has one character only.
struct SpareCharacters {
  char32_t plain = 0;
  char32_t shifted = 0;

  bool operator==(const SpareCharacters&) const = default;
};

/// Strokes that share one assignment of the spare keys.
struct TypingBatch {
  std::map<std::uint8_t, SpareCharacters> spares;  ///< may be empty
  std::vector<KeyStroke> strokes;

  bool operator==(const TypingBatch&) const = default;
};

/// The strokes that write `text`. Characters missing from the layout go to spare keys, two on each if
/// there is a Shift key, in as few batches as possible. No batch if the text needs spare keys and there are none.
std::vector<TypingBatch> planTyping(std::u32string_view text, const KeyTable& table);

}  // namespace voxtrel::quillback
