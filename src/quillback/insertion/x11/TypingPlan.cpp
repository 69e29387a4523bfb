#include "quillback/insertion/x11/TypingPlan.h"

#include <cstddef>
#include <optional>

namespace voxtrel::quillback {
namespace {

std::optional<KeyStroke> strokeIn(const TypingBatch& batch, char32_t character) {
  for (const auto& [code, characters] : batch.spares) {
    if (characters.plain == character) return KeyStroke{.code = code};
    if (characters.shifted == character) return KeyStroke{.code = code, .shift = true};
  }
  return std::nullopt;
}

/// Puts a character on the next key that has none, or else on the next one's second level. Nothing if all
/// are taken; `used` counts the batch's characters.
std::optional<KeyStroke> addTo(TypingBatch& batch, std::size_t used, char32_t character,
                               const KeyTable& table) {
  const std::size_t keys = table.spares.size();
  if (used < keys) {
    batch.spares[table.spares[used]] = {character, character};
    return KeyStroke{.code = table.spares[used]};
  }
  if (table.shiftCode == 0 || used >= 2 * keys) return std::nullopt;
  const std::uint8_t code = table.spares[used - keys];
  batch.spares[code].shifted = character;
  return KeyStroke{.code = code, .shift = true};
}

}  // namespace

std::vector<TypingBatch> planTyping(std::u32string_view text, const KeyTable& table) {
  std::vector<TypingBatch> batches(1);
  std::size_t used = 0;  // of the last batch's levels
  for (const char32_t character : text) {
    const auto known = table.strokes.find(character);
    if (known != table.strokes.end()) {
      batches.back().strokes.push_back(known->second);
      continue;
    }
    if (table.spares.empty()) return {};
    auto stroke = strokeIn(batches.back(), character);
    if (!stroke) {
      stroke = addTo(batches.back(), used, character, table);
      if (!stroke) {
        used = 0;
        stroke = addTo(batches.emplace_back(), used, character, table);
      }
      ++used;
    }
    batches.back().strokes.push_back(*stroke);
  }
  return batches;
}

}  // namespace voxtrel::quillback
