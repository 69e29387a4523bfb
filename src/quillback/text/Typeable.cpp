#include "quillback/text/Typeable.h"

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

}  // namespace voxtrel::quillback
