#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace voxtrel::quillback {

/// Whether `text` has `word` (or several words, with their blanks) not as a part of a longer word. Upper and
/// lower case count as they are in `word`.
bool hasWord(std::string_view text, std::string_view word);

/// Two texts of the same sound: `plain` was recognised without help, `hinted` by a model that was told
/// which words may come. A hint also changes what has nothing to do with it, so the text is `plain`, but for
/// the places where `hinted` says one of `words` that `plain` does not say there. Such a place is a few
/// words long in both texts; a word that stands for nothing in `plain` is made up. The punctuation behind it
/// is that of `plain`.
std::string withExpectedWords(std::string_view plain, std::string_view hinted,
                              const std::vector<std::string>& words);

}  // namespace voxtrel::quillback
