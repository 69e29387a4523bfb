#include "quillback/insertion/x11/TypingPlan.h"

#include <algorithm>
#include <optional>

namespace voxtrel::quillback {
namespace {

std::optional<std::uint8_t> keyOf(const TypingBatch& batch, char32_t character) {
  const auto found = std::find_if(batch.spares.begin(), batch.spares.end(),
                                  [&](const auto& spare) { return spare.second == character; });
  if (found == batch.spares.end()) return std::nullopt;
  return found->first;
}

}  // namespace

std::vector<TypingBatch> planTyping(std::u32string_view text, const KeyTable& table) {
  std::vector<TypingBatch> batches(1);
  for (const char32_t character : text) {
    const auto stroke = table.strokes.find(character);
    if (stroke != table.strokes.end()) {
      batches.back().strokes.push_back(stroke->second);
      continue;
    }
    if (table.spares.empty()) return {};
    auto code = keyOf(batches.back(), character);
    if (!code) {
      if (batches.back().spares.size() == table.spares.size()) batches.emplace_back();
      code = table.spares[batches.back().spares.size()];
      batches.back().spares.emplace(*code, character);
    }
    batches.back().strokes.push_back({.code = *code});
  }
  return batches;
}

}  // namespace voxtrel::quillback
