#include "quillback/insertion/x11/TypingPlan.h"

#include <algorithm>
#include <array>
#include <optional>

namespace voxtrel::quillback {
namespace {

struct Decoded {
  char32_t character = 0;
  std::size_t sizeBytes = 1;
  bool isValid = false;
};

std::size_t sequenceSize(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  if (lead >= 0xF0 && lead < 0xF5) return 4;
  return 0;
}

Decoded decode(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t size = sequenceSize(lead);
  if (size == 0 || size > text.size()) return {};
  if (size == 1) return {lead, 1, true};
  auto character = static_cast<char32_t>(lead & (0x7Fu >> size));
  for (std::size_t i = 1; i < size; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0) != 0x80) return {};
    character = character << 6 | (next & 0x3Fu);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character >= 0xD800 && character < 0xE000;
  if (character < kSmallest[size] || character > 0x10FFFF || isSurrogate) return {};
  return {character, size, true};
}

bool isNewlineOrTab(char32_t c) {
  return (c >= U'\t' && c <= U'\r') || c == 0x85 || c == 0x2028 || c == 0x2029;
}

bool isControl(char32_t c) {
  return c < U' ' || (c >= 0x7F && c < 0xA0);
}

std::optional<std::uint8_t> keyOf(const TypingBatch& batch, char32_t character) {
  const auto found = std::find_if(batch.spares.begin(), batch.spares.end(),
                                  [&](const auto& spare) { return spare.second == character; });
  if (found == batch.spares.end()) return std::nullopt;
  return found->first;
}

}  // namespace

std::u32string typeable(std::string_view text) {
  std::u32string result;
  while (!text.empty()) {
    const Decoded next = decode(text);
    text.remove_prefix(next.sizeBytes);
    if (!next.isValid) continue;
    if (isNewlineOrTab(next.character)) {
      result.push_back(U' ');
    } else if (!isControl(next.character)) {
      result.push_back(next.character);
    }
  }
  return result;
}

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
