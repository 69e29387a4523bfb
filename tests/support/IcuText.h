#pragma once

#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace voxtrel {

inline icu::UnicodeString wide(std::string_view utf8) {
  return icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())});
}

inline std::string narrow(const icu::UnicodeString& text) {
  std::string utf8;
  text.toUTF8String(utf8);
  return utf8;
}

inline std::string utf8Of(UChar32 character) {
  return narrow(icu::UnicodeString(character));
}

inline bool isNewline(UChar32 character) {
  return (character >= 0x0A && character <= 0x0D) || character == 0x85 || character == 0x2028 ||
         character == 0x2029;
}

inline bool isWhitespace(UChar32 character) {
  return character == '\t' || u_charType(character) == U_SPACE_SEPARATOR;
}

inline std::vector<icu::UnicodeString> linesOf(const icu::UnicodeString& text) {
  std::vector<icu::UnicodeString> lines(1);
  for (std::int32_t i = 0; i < text.length(); ++i) {
    if (isNewline(text[i])) {
      lines.emplace_back();
    } else {
      lines.back() += text[i];
    }
  }
  return lines;
}

inline icu::UnicodeString trimmed(icu::UnicodeString text) {
  while (!text.isEmpty() && isWhitespace(text[text.length() - 1])) text.truncate(text.length() - 1);
  while (!text.isEmpty() && isWhitespace(text[0])) text.remove(0, 1);
  return text;
}

/// One of ICU's regular expressions.
/// Thread: one.  Owns: the compiled expression.  Borrows: nothing.
/// Fails by: an exception where ICU reports an error, which fails the test.
class IcuPattern {
 public:
  explicit IcuPattern(const char* pattern)
      : matcher_(icu::UnicodeString::fromUTF8(pattern), 0, status_) {
    check();
  }

  /// A group of the first match anywhere in the text; 0 is the whole match.
  std::optional<icu::UnicodeString> find(const icu::UnicodeString& text, int group) {
    matcher_.reset(text);
    const bool isFound = matcher_.find(status_);
    check();
    if (!isFound) return std::nullopt;
    icu::UnicodeString found = matcher_.group(group, status_);
    check();
    return found;
  }

  bool matches(const icu::UnicodeString& text) {
    matcher_.reset(text);
    const bool isMatch = matcher_.matches(status_);
    check();
    return isMatch;
  }

 private:
  void check() const {
    if (U_FAILURE(status_)) throw std::runtime_error(u_errorName(status_));
  }

  UErrorCode status_ = U_ZERO_ERROR;
  icu::RegexMatcher matcher_;
};

}  // namespace voxtrel
