#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>

#include "support/Blanks.h"
#include "support/IcuText.h"
#include "support/RandomText.h"
#include "support/SetupWords.h"
#include "voxtrel/download/SetupOutput.h"

namespace voxtrel {
namespace {

/// The rules of the setup's progress, written a second time over ICU's regular expressions and the
/// C library's numbers.
/// Thread: one.  Owns: its patterns.  Borrows: nothing.
/// Fails by: an exception, which fails the test.
class ProgressRules {
 public:
  std::optional<SetupProgress> progressOf(const std::string& line) {
    const icu::UnicodeString text = wide(line);
    const auto downloaded = figures_.find(text, 1);
    if (!downloaded) return std::nullopt;
    const icu::UnicodeString percentage = *figures_.find(text, 3);
    if (!number_.matches(percentage)) return std::nullopt;
    const double number = std::strtod(narrow(percentage).c_str(), nullptr);
    return SetupProgress{narrow(*downloaded) + " MB", narrow(*figures_.find(text, 2)) + " MB",
                         std::min(number / 100.0, 1.0)};
  }

 private:
  IcuPattern figures_{R"(([\d.]+)\s*MB\s*/\s*([\d.]+)\s*MB\s*\(([\d.]+)%\))"};
  IcuPattern number_{R"([0-9]+\.?[0-9]*|\.[0-9]+)"};
};

void expectTheSame(ProgressRules& rules, const std::string& line) {
  ASSERT_EQ(parseProgress(line), rules.progressOf(line)) << testing::PrintToString(line);
}

std::string withoutNewlines(std::string text) {
  std::erase_if(text, [](char byte) { return byte >= '\n' && byte <= '\r'; });
  return text;
}

TEST(ProgressBesideIcu, IsTheSameInRandomLines) {
  ProgressRules rules;
  RandomText random(51);
  int found = 0;
  for (int round = 0; round < 60'000; ++round) {
    const std::string line = withoutNewlines(random.ofWords(kSetupWords, 14));
    ASSERT_NO_FATAL_FAILURE(expectTheSame(rules, line));
    found += parseProgress(line) ? 1 : 0;
  }
  EXPECT_GT(found, 4'000);
}

/// Lines that are nearly progress, with whitespace and digits of all kinds.
TEST(ProgressBesideIcu, IsTheSameInLinesWithEveryWhitespaceAndOddAmounts) {
  constexpr std::array kAmounts = {"1"sv, "0"sv, "9"sv, "."sv, "77"sv, "\xD9\xA3"sv, "\xDF\x80"sv};
  ProgressRules rules;
  RandomText random(52);
  int found = 0;
  for (int round = 0; round < 60'000; ++round) {
    const auto blanks = [&random] { return random.ofWords(kWhitespace, 2); };
    const auto amount = [&] { return random.ofWords(kAmounts, 5); };
    std::string line = withoutNewlines(random.ofWords(kSetupWords, 2));
    line += amount() + blanks() + "MB" + blanks() + "/" + blanks() + amount() + blanks() + "MB" +
            blanks() + "(" + amount() + "%)";
    if (random.below(3) == 0) line += withoutNewlines(random.ofWords(kSetupWords, 8));
    ASSERT_NO_FATAL_FAILURE(expectTheSame(rules, line));
    found += parseProgress(line) ? 1 : 0;
  }
  EXPECT_GT(found, 10'000);
}

TEST(ProgressBesideIcu, IsTheSameWithEachCharacterOfAllUnicodeInEveryPlace) {
  ProgressRules rules;
  int asBlank = 0;
  for (UChar32 character = 0; character <= UCHAR_MAX_VALUE; ++character) {
    if (character == 0xD800) character = 0xE000;  // surrogates
    if (isNewline(character)) continue;
    const std::string c = utf8Of(character);
    const std::string line = "1" + c + "MB" + c + "/" + c + "2" + c + "MB" + c + "(3%)";
    ASSERT_NO_FATAL_FAILURE(expectTheSame(rules, line));
    asBlank += parseProgress(line) ? 1 : 0;
  }
  EXPECT_EQ(asBlank, 18);  // the tab and category Zs, no more
}

/// A newer ICU knows digits of later versions too.
bool isInUnicode15(UChar32 character) {
  UVersionInfo version;
  u_charAge(character, version);
  return version[0] <= 15;
}

TEST(ProgressBesideIcu, HasTheSameDigitsOfAllUnicode) {
  IcuPattern digit(R"(\d)");
  int digits = 0;
  for (UChar32 character = 0; character <= UCHAR_MAX_VALUE; ++character) {
    if (character == 0xD800) character = 0xE000;
    const std::string c = utf8Of(character);
    const bool isDigit = isInUnicode15(character) && digit.matches(icu::UnicodeString(character));
    ASSERT_EQ(decimalDigitLength(c), isDigit ? c.size() : 0U) << std::hex << character;
    digits += isDigit ? 1 : 0;
  }
  EXPECT_EQ(digits, 680);
}

}  // namespace
}  // namespace voxtrel
