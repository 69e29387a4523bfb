#include "quillback/insertion/x11/TypingPlan.h"

#include <algorithm>
#include <optional>

#include "common/base/Utf8.h"

namespace voxtrel::quillback {
namespace {

bool isNewlineOrTab(char32_t c) {
  return (c >= U'\t' && c <= U'\r') || c == 0x85 || c == 0x2028 || c == 0x2029;
}

bool isControl(char32_t c) {
  return c < U' ' || (c >= 0x7F && c < 0xA0);
}

/// What is typed for one character; nothing if it is left out.
std::optional<char32_t> typedFor(const Utf8Character& character) {
  if (character.length == 0) return std::nullopt;
  if (character.code == U'\n') return kReturn;
  if (isNewlineOrTab(character.code)) return U' ';
  if (isControl(character.code)) return std::nullopt;
  return character.code;
}

/// Takes the first character off, or a byte that starts none.
Utf8Character takeFirst(std::string_view& text) {
  const Utf8Character first = firstCharacter(text);
  text.remove_prefix(std::max<std::size_t>(first.length, 1));
  return first;
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
    if (const auto typed = typedFor(takeFirst(text))) result.push_back(*typed);
  }
  return result;
}

std::string_view afterTyped(std::string_view text, std::size_t typed) {
  while (typed > 0 && !text.empty()) {
    if (typedFor(takeFirst(text))) --typed;
  }
  return text;
}

std::string_view separatorBetween(std::string_view before, std::string_view text) {
  constexpr std::string_view kBlanks = " \n";
  constexpr std::string_view kClosing = ".,;:!?)]}";
  if (text.empty() || before.empty() || before.ends_with('\n')) return "";
  if (kBlanks.find(text.front()) != std::string_view::npos) return "";
  // ".NET" and "!important" are words.
  const std::string_view rest =
      text.substr(std::min(text.find_first_not_of(kClosing), text.size()));
  const bool isMark = rest.size() < text.size();
  return isMark && (rest.empty() || kBlanks.find(rest.front()) != std::string_view::npos) ? ""
                                                                                          : " ";
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
