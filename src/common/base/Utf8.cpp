#include "common/base/Utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace voxtrel {
namespace {

constexpr std::size_t kAsciiBlockBytes = 64;
constexpr std::uint64_t kTopBits = 0x8080808080808080U;

bool isAsciiBlock(const char* block) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < kAsciiBlockBytes; i += sizeof bits) {
    std::uint64_t word = 0;
    std::memcpy(&word, block + i, sizeof word);
    bits |= word;
  }
  return (bits & kTopBits) == 0;
}

/// What a lead byte requires of the bytes after it. Only the second byte's range depends on it.
struct Sequence {
  std::size_t length = 0;  ///< 0: no sequence starts with this byte
  unsigned char secondMin = 0x80;
  unsigned char secondMax = 0xBF;
};

Sequence sequenceOf(unsigned char lead) {
  if (lead < 0x80) return {1};
  if (lead < 0xC2) return {};
  if (lead < 0xE0) return {2};
  if (lead == 0xE0) return {3, 0xA0};        // below are overlong forms
  if (lead == 0xED) return {3, 0x80, 0x9F};  // above are the surrogates
  if (lead < 0xF0) return {3};
  if (lead == 0xF0) return {4, 0x90};        // below are overlong forms
  if (lead == 0xF4) return {4, 0x80, 0x8F};  // above is past U+10FFFF
  return lead < 0xF4 ? Sequence{4} : Sequence{};
}

/// Bytes of the well-formed sequence at the start of `bytes`, which is not empty; 0 if there is
/// none.
std::size_t sequenceLength(std::string_view bytes) {
  const auto byteAt = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const Sequence sequence = sequenceOf(byteAt(0));
  if (sequence.length < 2) return sequence.length;
  if (sequence.length > bytes.size()) return 0;
  if (byteAt(1) < sequence.secondMin || byteAt(1) > sequence.secondMax) return 0;
  for (std::size_t i = 2; i < sequence.length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return 0;
  }
  return sequence.length;
}

}  // namespace

Utf8Character firstCharacter(std::string_view text) {
  const std::size_t length = sequenceLength(text);
  if (length == 0) return {};
  const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (length == 1) return {byteAt(0), 1};
  auto code = static_cast<char32_t>(byteAt(0) & (0x7FU >> length));
  for (std::size_t i = 1; i < length; ++i) code = code << 6 | (byteAt(i) & 0x3FU);
  return {code, length};
}

bool isUnspacedScript(char32_t character) {
  struct Range {
    char32_t first;
    char32_t last;
  };
  constexpr std::array<Range, 7> kRanges = {{{0x0E00, 0x0EFF},  // Thai, Lao
                                             {0x1000, 0x109F},  // Burmese
                                             {0x1780, 0x17FF},  // Khmer
                                             {0x3005, 0x3007},  // signs used like Han characters
                                             {0x3040, 0x30FF},  // Hiragana, Katakana
                                             {0x3400, 0x9FFF},  // Han
                                             {0x20000, 0x3FFFF}}};
  return std::any_of(kRanges.begin(), kRanges.end(), [character](const Range& range) {
    return range.first <= character && character <= range.last;
  });
}

bool isValidUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    if (bytes.size() >= kAsciiBlockBytes && isAsciiBlock(bytes.data())) {
      bytes.remove_prefix(kAsciiBlockBytes);
      continue;
    }
    // Check the characters that begin in this block; the next block may be ASCII again.
    std::size_t walked = 0;
    while (walked < kAsciiBlockBytes && walked < bytes.size()) {
      const std::size_t length = sequenceLength(bytes.substr(walked));
      if (length == 0) return false;
      walked += length;
    }
    bytes.remove_prefix(walked);
  }
  return true;
}

std::string_view utf8Prefix(std::string_view text, std::size_t maxBytes) {
  if (text.size() <= maxBytes) return text;
  const auto isContinuation = [text](std::size_t i) {
    return (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80;
  };
  std::size_t end = maxBytes;
  while (end > 0 && isContinuation(end)) --end;
  return text.substr(0, end);
}

}  // namespace voxtrel
