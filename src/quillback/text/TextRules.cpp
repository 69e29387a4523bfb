#include "quillback/text/TextRules.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"

namespace voxtrel::quillback {
namespace {

/// One character of the text; a byte that is not UTF-8 counts as one.
struct Character {
  char32_t folded = 0;  ///< in lower case
  std::string_view bytes;
};
using Characters = std::vector<Character>;

struct Range {
  char32_t first;
  char32_t last;
};

template <typename Ranges>
bool isWithin(char32_t c, const Ranges& ranges) {
  return std::ranges::any_of(
      ranges, [c](const Range& range) { return range.first <= c && c <= range.last; });
}

bool isOneOf(char32_t c, std::u32string_view characters) {
  return characters.find(c) != std::u32string_view::npos;
}

bool isBlank(char32_t c) {
  return isOneOf(c, U" \t\u00A0\u3000");
}

/// What a recogniser writes behind a sentence or a part of one.
bool isPause(char32_t c) {
  return isOneOf(c, U".,;:!?\u3001\u3002\uFF01\uFF0C\uFF1A\uFF1B\uFF1F");
}

bool isClosing(char32_t c) {
  return isPause(c) || isOneOf(c, U")]}\u2026");
}

bool isOpening(char32_t c) {
  return isOneOf(c, U"([{\u00A1\u00BF");
}

/// Letters, digits and marks on letters. Outside ASCII all but the known signs are letters.
bool isWordCharacter(char32_t c) {
  constexpr std::array<Range, 3> kAscii = {{{U'0', U'9'}, {U'A', U'Z'}, {U'a', U'z'}}};
  constexpr std::array<Range, 10> kSigns = {{{0x80, 0xA9},
                                             {0xAB, 0xB4},
                                             {0xB6, 0xB9},
                                             {0xBB, 0xBF},
                                             {0xD7, 0xD7},
                                             {0xF7, 0xF7},
                                             {0x2000, 0x2BFF},
                                             {0x3000, 0x3004},
                                             {0x3008, 0x3030},
                                             {0xFE30, 0xFF0F}}};
  return c < 0x80 ? isWithin(c, kAscii) : !isWithin(c, kSigns) && !isPause(c);
}

/// Lower case in the Latin, Greek and Cyrillic alphabets, whatever the locale; one apostrophe.
char32_t folded(char32_t c) {
  constexpr std::array<Range, 4> kBy32 = {
      {{U'A', U'Z'}, {0xC0, 0xDE}, {0x391, 0x3A9}, {0x410, 0x42F}}};
  constexpr std::array<Range, 2> kOddLower = {{{0x100, 0x137}, {0x14A, 0x177}}};
  constexpr std::array<Range, 2> kEvenLower = {{{0x139, 0x148}, {0x179, 0x17E}}};
  if (c == 0xD7) return c;
  if (isWithin(c, kBy32)) return c + 32;
  if (0x400 <= c && c <= 0x40F) return c + 80;
  if (isWithin(c, kOddLower)) return c | 1;
  if (isWithin(c, kEvenLower)) return c + c % 2;
  if (c == 0x178) return 0xFF;
  return c == 0x2019 ? U'\'' : c;
}

Characters charactersOf(std::string_view text) {
  Characters characters;
  characters.reserve(text.size());
  while (!text.empty()) {
    const Utf8Character next = firstCharacter(text);
    const std::size_t length = std::max<std::size_t>(next.length, 1);
    characters.push_back(
        {next.length == 0 ? U'\uFFFD' : folded(next.code), text.substr(0, length)});
    text.remove_prefix(length);
  }
  return characters;
}

/// A rule as it is searched for, and how what it inserts joins the text around it.
struct Search {
  std::u32string phrase;  ///< folded, with single blanks
  std::string_view replacement;
  bool takesBlanksBefore = false;
  bool takesBlanksAfter = false;
  bool takesPauseBefore = false;
  bool takesPauseAfter = false;
};

std::u32string phraseOf(std::string_view text) {
  std::u32string phrase;
  for (const Character& character : charactersOf(text)) {
    if (!isBlank(character.folded)) {
      phrase.push_back(character.folded);
    } else if (!phrase.empty() && phrase.back() != U' ') {
      phrase.push_back(U' ');
    }
  }
  if (phrase.ends_with(U' ')) phrase.pop_back();
  return phrase;
}

Search searchOf(const TextRule& rule) {
  Search search{phraseOf(rule.phrase), rule.replacement};
  const Characters text = charactersOf(rule.replacement);
  if (text.empty()) {
    search.takesBlanksBefore = search.takesPauseAfter = true;
    return search;
  }
  const char32_t first = text.front().folded;
  const char32_t last = text.back().folded;
  const bool isMark = std::ranges::all_of(
      text, [](char32_t c) { return isClosing(c) || isBlank(c); }, &Character::folded);
  search.takesBlanksBefore = isBlank(first) || first == U'\n' || isClosing(first);
  search.takesBlanksAfter = isBlank(last) || last == U'\n' || isOpening(last);
  search.takesPauseBefore = isMark;
  search.takesPauseAfter = isMark || last == U'\n';
  return search;
}

/// All usable rules, the longest phrase first.
std::vector<Search> searchesOf(const std::vector<TextRule>& rules) {
  std::vector<Search> searches;
  searches.reserve(rules.size());
  std::ranges::transform(rules, std::back_inserter(searches), searchOf);
  std::erase_if(searches, [](const Search& search) { return search.phrase.empty(); });
  std::ranges::stable_sort(searches, std::ranges::greater(),
                           [](const Search& search) { return search.phrase.size(); });
  return searches;
}

/// Replaces phrases in one text, from its start to its end.
/// Thread: one.  Borrows: the text's characters, the searches.
class Replacer {
 public:
  Replacer(const Characters& text, const std::vector<Search>& searches)
      : text_(text), searches_(searches) {}

  std::string run() {
    while (at_ < text_.size()) {
      const auto found = std::ranges::find_if(
          searches_, [this](const Search& search) { return endOf(search.phrase) > at_; });
      if (found != searches_.end()) {
        replace(*found);
      } else {
        result_ += text_[at_++].bytes;
      }
    }
    return std::move(result_);
  }

 private:
  bool isBorder(std::size_t position) const {
    if (position == 0 || position == text_.size()) return true;
    const char32_t before = text_[position - 1].folded;
    const char32_t after = text_[position].folded;
    return !isWordCharacter(before) || !isWordCharacter(after) || isUnspacedScript(before) ||
           isUnspacedScript(after);
  }
  bool isBlankAt(std::size_t position) const {
    return position < text_.size() && isBlank(text_[position].folded);
  }

  /// Where the phrase ends that stands here; here if it does not.
  std::size_t endOf(std::u32string_view phrase) const {
    std::size_t end = at_;
    for (const char32_t c : phrase) {
      if (end == text_.size()) return at_;
      const bool isMatch = c == U' ' ? isBlankAt(end) : text_[end].folded == c;
      if (!isMatch) return at_;
      ++end;
      while (c == U' ' && isBlankAt(end)) ++end;
    }
    return isBorder(at_) && isBorder(end) ? end : at_;
  }

  void replace(const Search& search) {
    at_ = endOf(search.phrase);
    if (search.takesPauseBefore) dropPauseBefore();
    if (search.takesBlanksBefore) dropBlanksBefore();
    result_ += search.replacement;
    inserted_ = result_.size();
    if (search.takesPauseAfter) skipPause();
    while ((search.takesBlanksAfter || result_.empty()) && isBlankAt(at_)) ++at_;
  }

  void dropBlanksBefore() {
    while (result_.size() > inserted_ && result_.ends_with(' ')) result_.pop_back();
  }
  void dropPauseBefore() {
    dropBlanksBefore();
    const Characters rest = charactersOf(std::string_view(result_).substr(inserted_));
    if (rest.empty() || !isPause(rest.back().folded)) return;
    result_.resize(result_.size() - rest.back().bytes.size());
    dropBlanksBefore();
  }
  /// A mark inside a number or a name is none of the recogniser's pauses.
  void skipPause() {
    if (at_ == text_.size() || !isPause(text_[at_].folded)) return;
    if (at_ + 1 == text_.size() || isBlankAt(at_ + 1)) ++at_;
  }

  const Characters& text_;
  const std::vector<Search>& searches_;
  std::size_t at_ = 0;
  std::string result_;
  std::size_t inserted_ = 0;  ///< where the last replacement ends in the result
};

bool isInvisible(char32_t c) {
  constexpr std::array<Range, 4> kInvisible = {
      {{0x200B, 0x200B}, {0x202A, 0x202E}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF}}};
  return isWithin(c, kInvisible);
}

}  // namespace

std::string replaced(std::string_view text, const std::vector<TextRule>& rules) {
  if (rules.empty()) return std::string(text);
  const Characters characters = charactersOf(text);
  const std::vector<Search> searches = searchesOf(rules);
  return Replacer(characters, searches).run();
}

std::string withoutInvisible(std::string_view text) {
  std::string visible;
  visible.reserve(text.size());
  while (!text.empty()) {
    const Utf8Character next = firstCharacter(text);
    const std::size_t length = std::max<std::size_t>(next.length, 1);
    if (!isInvisible(next.code)) visible += text.substr(0, length);
    text.remove_prefix(length);
  }
  return visible;
}

std::string oneLineOfWords(std::string_view text) {
  // Of bytes that are not UTF-8, those around an invisible character may make up another one.
  return trimmedOneLine(withoutInvisible(oneLine(text)));
}

}  // namespace voxtrel::quillback
