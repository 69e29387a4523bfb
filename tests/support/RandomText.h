#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>

namespace voxtrel {

/// Texts that are random but the same in every run and with every library.
/// Thread: one.  Owns: the generator.  Borrows: nothing.
/// Fails by: nothing can fail.
class RandomText {
 public:
  explicit RandomText(std::uint64_t seed) : random_(seed) {}

  std::size_t below(std::size_t limit) { return random_() % limit; }

  /// Up to `maxWords` of the words, one after the other.
  std::string ofWords(std::span<const std::string_view> words, std::size_t maxWords) {
    std::string text;
    for (std::size_t left = below(maxWords + 1); left > 0; --left) {
      text += words[below(words.size())];
    }
    return text;
  }

  /// The text with up to three bytes changed, taken out or put in, wherever they are.
  std::string damaged(std::string text) {
    for (std::size_t left = below(4); left > 0; --left) {
      const auto byte = static_cast<char>(below(256));
      const std::size_t place = below(text.size() + 1);
      if (place == text.size() || below(3) == 0) {
        text.insert(place, 1, byte);
      } else if (below(2) == 0) {
        text[place] = byte;
      } else {
        text.erase(place, 1);
      }
    }
    return text;
  }

 private:
  std::mt19937_64 random_;
};

}  // namespace voxtrel
