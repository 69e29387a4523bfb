#include "quillback/recognition/speech/ExpectedWords.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <span>

namespace voxtrel::quillback {
namespace {

bool isAsciiWord(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool isMark(char c) {
  return std::ispunct(static_cast<unsigned char>(c)) != 0;
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

/// One word of a text.
struct Word {
  std::string_view written;  ///< with the blanks before it
  std::string_view bare;     ///< without blanks and marks around it
  std::string folded;        ///< that, in lower case
  bool isExpected = false;   ///< in this spelling
};
using Words = std::vector<Word>;

Words splitWords(std::string_view text, const std::vector<std::string>& expected) {
  Words words;
  while (!text.empty()) {
    const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    std::string_view bare = text.substr(begin, end - begin);
    while (!bare.empty() && isMark(bare.front())) bare.remove_prefix(1);
    while (!bare.empty() && isMark(bare.back())) bare.remove_suffix(1);
    const bool isExpected = std::ranges::any_of(
        expected, [bare](const std::string& each) { return hasWord(each, bare); });
    words.push_back({text.substr(0, end), bare, lowerCase(bare), isExpected});
    text.remove_prefix(end);
  }
  return words;
}

std::string written(std::span<const Word> words) {
  std::string text;
  for (const Word& word : words) text += word.written;
  return text;
}

std::string joined(std::string text, std::string_view middle, std::string_view end) {
  text.append(middle).append(end);
  return text;
}

/// Where the two texts differ: these words of each.
struct Place {
  std::size_t plainBegin = 0;
  std::size_t plainEnd = 0;
  std::size_t hintedBegin = 0;
  std::size_t hintedEnd = 0;
};

/// The longest common sequence decides what differs: entry (i, j) is its length from these words on.
/// Thread: one.  Borrows: both texts' words.
class Comparison {
 public:
  Comparison(const Words& plain, const Words& hinted)
      : plain_(plain), hinted_(hinted), lengths_((plain.size() + 1) * (hinted.size() + 1)) {
    for (std::size_t i = plain.size(); i-- > 0;) {
      for (std::size_t j = hinted.size(); j-- > 0;) {
        length(i, j) =
            isSame(i, j) ? length(i + 1, j + 1) + 1 : std::max(length(i + 1, j), length(i, j + 1));
      }
    }
  }

  std::vector<Place> differences() {
    std::vector<Place> places;
    Place place;
    while (place.plainEnd < plain_.size() || place.hintedEnd < hinted_.size()) {
      const bool isInBoth = place.plainEnd < plain_.size() && place.hintedEnd < hinted_.size();
      if (isInBoth && isSame(place.plainEnd, place.hintedEnd)) {
        add(places, place);
        place = {place.plainEnd + 1, place.plainEnd + 1, place.hintedEnd + 1, place.hintedEnd + 1};
      } else if (place.hintedEnd == hinted_.size() ||
                 (place.plainEnd < plain_.size() &&
                  length(place.plainEnd + 1, place.hintedEnd) >=
                      length(place.plainEnd, place.hintedEnd + 1))) {
        ++place.plainEnd;
      } else {
        ++place.hintedEnd;
      }
    }
    add(places, place);
    return places;
  }

 private:
  static void add(std::vector<Place>& places, const Place& place) {
    if (place.plainBegin < place.plainEnd || place.hintedBegin < place.hintedEnd) {
      places.push_back(place);
    }
  }
  [[nodiscard]] bool isSame(std::size_t i, std::size_t j) const {
    return hinted_[j].isExpected ? plain_[i].bare == hinted_[j].bare
                                 : plain_[i].folded == hinted_[j].folded;
  }
  std::size_t& length(std::size_t i, std::size_t j) {
    return lengths_[i * (hinted_.size() + 1) + j];
  }

  const Words& plain_;
  const Words& hinted_;
  std::vector<std::size_t> lengths_;
};

/// `text` with the marks at the end of `model` instead of its own.
std::string withMarksOf(std::string_view model, std::string text) {
  while (!text.empty() && isMark(text.back())) text.pop_back();
  std::size_t begin = model.size();
  while (begin > 0 && isMark(model[begin - 1])) --begin;
  return text.append(model.substr(begin));
}

std::size_t timesSaid(std::string_view text, std::string_view word) {
  std::size_t times = 0;
  for (std::size_t at = text.find(word); at != std::string_view::npos;
       at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    const bool isPart = (at > 0 && isAsciiWord(text[at - 1]) && isAsciiWord(word.front())) ||
                        (end < text.size() && isAsciiWord(text[end]) && isAsciiWord(word.back()));
    if (!isPart) ++times;
  }
  return times;
}

/// Whether `text` says one of the words more often than `before` does; a word at the start of a sentence may
/// be written with a capital letter.
bool saysMoreOf(std::string_view text, std::string_view before,
                const std::vector<std::string>& words) {
  const std::string lowerText = lowerCase(text);
  const std::string lowerBefore = lowerCase(before);
  return std::ranges::any_of(words, [&](const std::string& word) {
    if (word.empty()) return false;
    const std::string lower = lowerCase(word);
    return timesSaid(text, word) > timesSaid(before, word) ||
           timesSaid(lowerText, lower) > timesSaid(lowerBefore, lower);
  });
}

}  // namespace

bool hasWord(std::string_view text, std::string_view word) {
  return !word.empty() && timesSaid(text, word) > 0;
}

std::string withExpectedWords(std::string_view plain, std::string_view hinted,
                              const std::vector<std::string>& words) {
  constexpr std::size_t kMaxWords = 6;
  const Words plainWords = splitWords(plain, words);
  const Words hintedWords = splitWords(hinted, words);
  const std::span all(plainWords);
  std::string text;
  std::size_t done = 0;  // words of `plain`
  for (const Place& place : Comparison(plainWords, hintedWords).differences()) {
    const std::size_t length = place.plainEnd - place.plainBegin;
    const std::size_t hintedLength = place.hintedEnd - place.hintedBegin;
    text += written(all.subspan(done, place.plainBegin - done));
    done = place.plainEnd;
    const std::string old = written(all.subspan(place.plainBegin, length));
    const std::string rest = written(all.subspan(done));
    const std::string changed =
        withMarksOf(old, written(std::span(hintedWords).subspan(place.hintedBegin, hintedLength)));
    const bool isShort = std::max(length, hintedLength) <= kMaxWords && length > 0;
    const bool isHeard =
        isShort && saysMoreOf(joined(text, changed, rest), joined(text, old, rest), words);
    text += isHeard ? changed : old;
  }
  return text + written(all.subspan(done));
}

}  // namespace voxtrel::quillback
