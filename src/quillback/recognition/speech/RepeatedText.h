#pragma once

#include <string>
#include <string_view>

namespace voxtrel::quillback {

struct CutText {
  std::string text;
  bool wasCut = false;
};

/// `text` without the repetitions at its end that a decoder writes when it does not find an end: of a
/// phrase that stands there again and again, the first is left, as it is written there. Case and
/// punctuation do not matter; the last one may be incomplete.
///
/// So often must the phrase stand there at least, which people do not say by intent:
/// - one word: 8 times; with digits only, of any length: 12 times;
/// - 2 to 6 words: 5 times; 7 to 12 words: 3 times;
/// - where words stand without blanks, one character: 15 times; 2 to 20 characters: 5 times.
CutText cutRepetition(std::string_view text);

}  // namespace voxtrel::quillback
