#include "quillback/recognition/speech/RepeatedText.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "common/base/Utf8.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxPhraseWords = 12;
constexpr std::size_t kMaxPhraseCharacters = 20;

/// A word or a character.
struct Unit {
  std::string key;      ///< what is compared; empty for punctuation alone
  std::size_t end = 0;  ///< in the text
};
using Units = std::vector<Unit>;

bool isAsciiLetter(char c) {
  return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z');
}

bool isAsciiDigit(char c) {
  return '0' <= c && c <= '9';
}

/// Lower case, without the punctuation around it.
std::string wordKey(std::string_view word) {
  const auto isMark = [](char c) {
    return c >= ' ' && c <= '~' && !isAsciiLetter(c) && !isAsciiDigit(c);
  };
  while (!word.empty() && isMark(word.front())) word.remove_prefix(1);
  while (!word.empty() && isMark(word.back())) word.remove_suffix(1);
  std::string key(word);
  std::ranges::transform(key, key.begin(), [](char c) {
    return 'A' <= c && c <= 'Z' ? static_cast<char>(c + 32) : c;
  });
  return key;
}

Units wordsOf(std::string_view text) {
  Units words;
  for (std::size_t begin = text.find_first_not_of(' '); begin < text.size();) {
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    words.push_back({wordKey(text.substr(begin, end - begin)), end});
    begin = text.find_first_not_of(' ', end);
  }
  // A dash between words is no word.
  std::erase_if(words, [](const Unit& word) { return word.key.empty(); });
  return words;
}

Units charactersOfText(std::string_view text) {
  Units characters;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = std::max<std::size_t>(firstCharacter(text.substr(at)).length, 1);
    characters.push_back({std::string(text.substr(at, length)), at + length});
    at += length;
  }
  return characters;
}

/// Whether the units are one shorter phrase several times: then that one is judged.
bool isRepetition(std::span<const Unit> phrase) {
  for (std::size_t period = 1; period <= phrase.size() / 2; ++period) {
    if (phrase.size() % period == 0 &&
        std::ranges::equal(phrase.first(phrase.size() - period), phrase.subspan(period), {},
                           &Unit::key, &Unit::key)) {
      return true;
    }
  }
  return false;
}

/// Where the end of the text begins that repeats itself after `period` units; the number of units if
/// it does not.
std::size_t beginOfRun(const Units& units, std::size_t period) {
  std::size_t begin = units.size();
  const auto follows = [&](std::size_t at) {
    const std::string& key = units[at].key;
    const std::string& expected = units[at - period].key;
    // The last word may have been cut.
    return at + 1 == units.size() ? expected.starts_with(key) : expected == key;
  };
  while (begin > period && follows(begin - 1)) --begin;
  return begin == units.size() ? begin : begin - period;
}

std::size_t minTimes(std::span<const Unit> phrase) {
  constexpr std::size_t kNumbers = 12;
  constexpr std::size_t kOneWord = 8;
  constexpr std::size_t kFewWords = 5;
  constexpr std::size_t kManyWords = 3;
  constexpr std::size_t kMaxFewWords = 6;
  const bool areNumbers = std::ranges::all_of(phrase, [](const Unit& word) {
    return std::ranges::none_of(word.key, [](char c) { return !isAsciiDigit(c); });
  });
  if (areNumbers) return kNumbers;
  if (phrase.size() == 1) return kOneWord;
  return phrase.size() <= kMaxFewWords ? kFewWords : kManyWords;
}

/// Characters count only where words stand without blanks; elsewhere they are parts of words.
std::size_t minTimesOfCharacters(std::span<const Unit> phrase) {
  constexpr std::size_t kOneCharacter = 15;
  constexpr std::size_t kPhrase = 5;
  constexpr auto kNever = static_cast<std::size_t>(-1);
  const auto isAscii = [](const Unit& unit) { return unit.key.size() == 1; };
  const auto isUnspaced = [](const Unit& unit) {
    return isUnspacedScript(firstCharacter(unit.key).code);
  };
  if (std::ranges::any_of(phrase, isAscii) || std::ranges::none_of(phrase, isUnspaced))
    return kNever;
  return phrase.size() == 1 ? kOneCharacter : kPhrase;
}

/// How much of the text is left; all of it if nothing is repeated too often.
template <typename MinTimes>
std::size_t lengthLeft(std::string_view text, const Units& units, std::size_t maxPeriod,
                       MinTimes minimum) {
  for (std::size_t period = 1; period <= maxPeriod && 2 * period < units.size(); ++period) {
    const std::size_t begin = beginOfRun(units, period);
    if (begin == units.size()) continue;
    const auto phrase = std::span(units).subspan(begin, period);
    if (isRepetition(phrase) || (units.size() - begin) / period < minimum(phrase)) continue;
    return phrase.back().end;
  }
  return text.size();
}

}  // namespace

CutText cutRepetition(std::string_view text) {
  std::size_t left = lengthLeft(text, wordsOf(text), kMaxPhraseWords, minTimes);
  if (left == text.size()) {
    left = lengthLeft(text, charactersOfText(text), kMaxPhraseCharacters, minTimesOfCharacters);
  }
  std::string_view kept = text.substr(0, left);
  const bool wasCut = left < text.size();
  constexpr std::string_view kOpenEnds = " ,;:-";
  while (wasCut && !kept.empty() && kOpenEnds.find(kept.back()) != std::string_view::npos) {
    kept.remove_suffix(1);
  }
  return {std::string(kept), wasCut};
}

}  // namespace voxtrel::quillback
