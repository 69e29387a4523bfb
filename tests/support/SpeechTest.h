#pragma once

#include <array>
#include <string>
#include <vector>

#include "quillback/ports/Output.h"

namespace voxtrel::quillback::test {

/// Phrases that the embedded recogniser gets right word for word in the default voice of Voice.
inline constexpr std::array<const char*, 9> kPhrases = {
    "one two three four five", "how are you today",     "nice to meet you",
    "see you next week",       "we need more time",     "the answer is yes",
    "happy birthday to you",   "we are ready to start", "this is the first time"};

struct Lines final : Output {
  void print(std::string_view line) override { lines.emplace_back(line); }
  std::vector<std::string> lines;
};

}  // namespace voxtrel::quillback::test
