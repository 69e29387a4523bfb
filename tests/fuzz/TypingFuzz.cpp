// Any bytes as recognised text: it becomes one line, characters that are typed, and key strokes that write
// exactly those.

#include <algorithm>
#include <string>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"
#include "fuzz/FuzzEntry.h"
#include "quillback/insertion/x11/TypingPlan.h"
#include "quillback/text/TextRules.h"
#include "quillback/text/Typeable.h"

using namespace voxtrel;
using namespace voxtrel::quillback;

namespace {

constexpr std::uint8_t kFirstCode = 10;
constexpr std::uint8_t kFirstSpare = 100;
constexpr unsigned kMaxSpares = 20;

bool isControl(char32_t c) {
  return c < U' ' || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

/// A layout with small letters, with capitals if it has a Shift key, and with some spare keys.
KeyTable tableOf(std::uint8_t choice) {
  KeyTable table;
  std::uint8_t code = kFirstCode;
  table.strokes[kReturn] = {.code = code++};
  table.strokes[U' '] = {.code = code++};
  const bool hasShift = choice % 2 == 1;
  if (hasShift) table.shiftCode = code++;
  for (char32_t letter = U'a'; letter <= U'z'; ++letter, ++code) {
    table.strokes[letter] = {.code = code};
    if (hasShift) table.strokes[letter - U'a' + U'A'] = {.code = code, .shift = true};
  }
  for (unsigned i = 0; i < choice / 2 % kMaxSpares; ++i) {
    table.spares.push_back(static_cast<std::uint8_t>(kFirstSpare + i));
  }
  return table;
}

char32_t writtenBy(const KeyStroke& stroke, const TypingBatch& batch, const KeyTable& table) {
  const auto spare = batch.spares.find(stroke.code);
  if (spare != batch.spares.end()) {
    return stroke.shift ? spare->second.shifted : spare->second.plain;
  }
  for (const auto& [character, known] : table.strokes) {
    if (known == stroke) return character;
  }
  require(false, "a stroke is of the layout or of a spare key");
  return 0;
}

void requirePlan(const std::u32string& text, const KeyTable& table) {
  const auto batches = planTyping(text, table);
  if (batches.empty()) {
    require(table.spares.empty(), "with spare keys everything can be typed");
    return;
  }
  std::u32string written;
  for (const TypingBatch& batch : batches) {
    for (const auto& [code, characters] : batch.spares) {
      const auto& spares = table.spares;
      require(std::find(spares.begin(), spares.end(), code) != spares.end(),
              "only spare keys are changed");
      require(!table.strokes.contains(characters.plain), "what a layout has needs no spare key");
    }
    for (const KeyStroke& stroke : batch.strokes) written += writtenBy(stroke, batch, table);
  }
  require(written == text, "the strokes write the text");
}

void requireLine(const std::string& text) {
  const std::string line = oneLine(text);
  require(isValidUtf8(line), "a line is UTF-8");
  require(oneLine(line) == line, "a line stays as it is");
  for (std::string_view rest = line; !rest.empty();) {
    const Utf8Character first = firstCharacter(rest);
    require(!isControl(first.code), "a line has no control characters");
    rest.remove_prefix(first.length);
  }
  const std::string trimmed = trimmedOneLine(text);
  require(trimmed.empty() || (trimmed.front() != ' ' && trimmed.back() != ' '),
          "no blanks are left at the ends");
  require(line.find(trimmed) != std::string::npos, "trimming takes blanks only");
  const std::string words = oneLineOfWords(text);
  require(withoutInvisible(words) == words && trimmedOneLine(words) == words,
          "words stay as they are");
  const std::string seen = withoutInvisible(line);
  require(seen.size() <= line.size() && withoutInvisible(seen) == seen,
          "what is left out stays out");
}

void requireTyped(const std::string& text) {
  const std::u32string typed = typeable(text);
  for (const char32_t c : typed) {
    require(c == kReturn || !isControl(c), "no control character is typed");
  }
  for (std::size_t done = 0; done <= typed.size(); done += 1 + typed.size() / 4) {
    require(typeable(afterTyped(text, done)) == typed.substr(done), "the rest is the rest");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(data + 1, data + size);
  requireLine(text);
  requireTyped(text);
  requirePlan(typeable(text), tableOf(data[0]));
  return 0;
}
