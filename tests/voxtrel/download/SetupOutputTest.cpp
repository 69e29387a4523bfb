#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "support/Blanks.h"
#include "voxtrel/download/SetupOutput.h"

namespace voxtrel {

void PrintTo(const SetupProgress& progress, std::ostream* stream) {
  *stream << progress.downloadedMB << '|' << progress.totalMB << '|' << progress.fraction;
}

namespace {

std::optional<double> fractionOf(const std::string& percentage) {
  const auto progress = parseProgress("1 MB / 2 MB (" + percentage + "%)");
  if (!progress) return std::nullopt;
  EXPECT_EQ(progress->downloadedMB, "1 MB");
  return progress->fraction;
}

TEST(SetupOutput, ParsesTheProgress) {
  EXPECT_EQ(parseProgress("812.4 MB / 3094.1 MB (26.3%)"),
            (SetupProgress{"812.4 MB", "3094.1 MB", 0.263}));
  EXPECT_EQ(parseProgress("0.0 MB / 3094.1 MB (0.0%)"),
            (SetupProgress{"0.0 MB", "3094.1 MB", 0.0}));
}

TEST(SetupOutput, NeedsNoSpaces) {
  EXPECT_EQ(parseProgress("12MB/100MB(12%)"), (SetupProgress{"12 MB", "100 MB", 0.12}));
  EXPECT_EQ(parseProgress("12MB/100MB (12%)"), (SetupProgress{"12 MB", "100 MB", 0.12}));
}

TEST(SetupOutput, AllowsAnyWhitespaceBetweenThePartsButNotInsideThem) {
  for (const std::string_view blank : kWhitespace) {
    const std::string b(blank);
    EXPECT_EQ(parseProgress("1" + b + b + "MB" + b + "/" + b + "2" + b + "MB" + b + "(3%)"),
              (SetupProgress{"1 MB", "2 MB", 0.03}))
        << ::testing::PrintToString(b);
    for (const std::string& line : {"1 M" + b + "B / 2 MB (3%)", "1 MB / 2 MB (" + b + "3%)",
                                    "1 MB / 2 MB (3" + b + "%)", "1 MB / 2 MB (3%" + b + ")"}) {
      EXPECT_EQ(parseProgress(line), std::nullopt) << line;
    }
  }
}

TEST(SetupOutput, FindsTheFirstFiguresAnywhereInTheLine) {
  EXPECT_EQ(parseProgress("model.bin:v1.5.0 12.5 MB / 50 MB (25%), 9 MB / 9 MB (9%)"),
            (SetupProgress{"12.5 MB", "50 MB", 0.25}));
  EXPECT_EQ(parseProgress("1 MB / 2 MB / 4 MB (50%)"), (SetupProgress{"2 MB", "4 MB", 0.5}));
  EXPECT_EQ(parseProgress("1 MB / 2 GB (1%) 3 MB / 4 MB (75%)"),
            (SetupProgress{"3 MB", "4 MB", 0.75}));
  EXPECT_EQ(parseProgress("\xE6\xBC\xA2\x31 MB / 2 MB (50%)\xE6\xBC\xA2"),
            (SetupProgress{"1 MB", "2 MB", 0.5}));
}

TEST(SetupOutput, IgnoresAllButTheFirstFigures) {
  EXPECT_EQ(parseProgress("1 MB / 2 MB (1.2.3%) 3 MB / 4 MB (75%)"), std::nullopt);
}

TEST(SetupOutput, RejectsALineWithAMissingOrWrongPart) {
  for (const char* line :
       {"", "MB / 2 MB (3%)", "1 / 2 MB (3%)", "1 MB 2 MB (3%)", "1 MB / MB (3%)", "1 MB / 2 (3%)",
        "1 MB / 2 MB 3%", "1 MB / 2 MB (%)", "1 MB / 2 MB (3)", "1 MB / 2 MB (3%",
        "1 mb / 2 mb (3%)", "1 MB / 2 MB (-3%)", "-1 MB / +2 MB (3%)", "1,5 MB / 2,5 MB (3,1%)",
        "1 MiB / 2 MiB (3%)", "1 MB / 2 MB [3%]", "1 MB \\ 2 MB (3%)", "100%)", "%)"}) {
    EXPECT_EQ(parseProgress(line), std::nullopt) << line;
  }
  EXPECT_EQ(parseProgress("-1 MB / 2 MB (3%)"), (SetupProgress{"1 MB", "2 MB", 0.03}));
}

TEST(SetupOutput, CopiesTheAmountsAsPrinted) {
  EXPECT_EQ(parseProgress("1.2.3 MB / 4 MB (5%)"), (SetupProgress{"1.2.3 MB", "4 MB", 0.05}));
  EXPECT_EQ(parseProgress("... MB / 00.70 MB (5%)"), (SetupProgress{"... MB", "00.70 MB", 0.05}));
  EXPECT_EQ(parseProgress("\xD9\xA3.\xF0\x9D\x9F\x98 MB / \xEF\xBC\x91 MB (5%)"),
            (SetupProgress{"\xD9\xA3.\xF0\x9D\x9F\x98 MB", "\xEF\xBC\x91 MB", 0.05}));
}

TEST(SetupOutput, LimitsThePercentageToAHundred) {
  EXPECT_EQ(fractionOf("100"), 1.0);
  EXPECT_EQ(fractionOf("100.1"), 1.0);
  EXPECT_EQ(fractionOf("12345"), 1.0);
  EXPECT_EQ(fractionOf("99.5"), 0.995);
}

TEST(SetupOutput, ParsesAPercentageOfAnyLength) {
  EXPECT_EQ(fractionOf("5."), 0.05);
  EXPECT_EQ(fractionOf(".5"), 0.005);
  EXPECT_EQ(fractionOf("007"), 0.07);
  EXPECT_EQ(fractionOf(std::string(400, '9')), 1.0);  // beyond every double
  EXPECT_EQ(fractionOf("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(fractionOf(std::string(400, '0') + "." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(fractionOf("50." + std::string(1000, '0')), 0.5);
}

TEST(SetupOutput, RejectsAPercentageThatIsNotANumber) {
  for (const char* percentage : {"1.2.3", ".", "..", "1..", "..1", "\xD9\xA3", "1\xD9\xA3",
                                 "\xEF\xBC\x91", "1e1", "0x1", "inf", "+1", " 1"}) {
    EXPECT_EQ(fractionOf(percentage), std::nullopt) << percentage;
  }
}

TEST(SetupOutput, KnowsTheDecimalDigitsOfEveryScript) {
  for (const char* digit : {"0", "9", "\xD9\xA0", "\xDB\xB9", "\xDF\x80", "\xE0\xA5\xA6",
                            "\xEA\xA7\xB0", "\xEF\xBC\x99", "\xF0\x91\xBD\x90", "\xF0\x9D\x9F\x8E",
                            "\xF0\x9D\x9F\xBF", "\xF0\x9F\xAF\xB9"}) {
    EXPECT_EQ(decimalDigitLength(digit), std::string(digit).size()) << digit;
    EXPECT_EQ(decimalDigitLength(std::string(digit) + "9"), std::string(digit).size());
  }
  for (const char* other :
       {"", "a", ".", "\xC2\xB2", "\xC2\xBD", "\xE2\x85\xA3", "\xE4\xB8\x80", "\xD9\xAA",
        "\xF0\x9E\x85\x8A", "\xD9", "\xF0\x9D\x9F", "\x80\xA0", "\xD9(", "\xFF\xFF\xFF\xFF"}) {
    EXPECT_EQ(decimalDigitLength(other), 0U) << other;
  }
}

TEST(SetupOutput, LogsEveryLineThatDoesNotLookLikeProgress) {
  EXPECT_FALSE(isLogged("812.4 MB / 3094.1 MB (26.3%)"));
  EXPECT_TRUE(isLogged("12MB/100MB (12%)"));
  EXPECT_FALSE(isLogged("about 5 MB / second"));
  EXPECT_FALSE(isLogged("MB /"));
  EXPECT_TRUE(isLogged("MB\t/"));
  EXPECT_TRUE(isLogged("mb /"));
  EXPECT_TRUE(isLogged(" "));
}

TEST(SetupOutput, SearchesALongLineInOnePass) {
  std::string line;
  while (line.size() < 1'000'000) line += "12.5 MB / 100.0 ";
  EXPECT_EQ(parseProgress(line + "MB (7%)"), (SetupProgress{"12.5 MB", "100.0 MB", 0.07}));
  EXPECT_EQ(parseProgress(std::string(1'000'000, '1') + "%)"), std::nullopt);
}

}  // namespace
}  // namespace voxtrel
