#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace voxtrel::quillback {

/// A keymap that writes any text: one key per character, without modifiers. It begins with ASCII and
/// grows by what a text needs, so a client that is slow to read the newest keymap still reads earlier
/// keys right.
/// Thread: one, as a value.
class TextKeymap {
 public:
  TextKeymap();

  /// Gives the start of `text` its keys, as many characters as fit. Returns their number.
  std::size_t add(std::u32string_view text);
  /// Begins again with ASCII. Keys that a client has not read by then are lost.
  void restart();
  /// Whether `xkbText` is another one than at the last call.
  [[nodiscard]] bool takeChange();

  /// The evdev code of a character's key, which must have been added.
  std::uint32_t keyOf(char32_t character) const { return keys_.at(character); }
  /// The whole keymap in XKB's text format.
  std::string xkbText() const;

 private:
  bool addOne(char32_t character);

  std::map<char32_t, std::uint32_t> keys_;
  std::vector<std::uint32_t> free_;  // the next one last
  bool hasChanged_ = true;
};

}  // namespace voxtrel::quillback
