#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quillback/recognition/speech/ExpectedWords.h"

namespace voxtrel::quillback {
namespace {

const std::vector<std::string> kWords = {"Joanis", "CNRC", "New Elm", "GitHub"};

std::string merged(std::string_view plain, std::string_view hinted) {
  return withExpectedWords(plain, hinted, kWords);
}

TEST(ExpectedWordsTest, AWordThatOnlyTheHintedTextSaysIsTaken) {
  EXPECT_EQ(merged(" I am Eric Joannis today.", " I am Eric Joanis today."),
            " I am Eric Joanis today.");
  EXPECT_EQ(merged(" Joannis", " Joanis"), " Joanis");
}

TEST(ExpectedWordsTest, WithoutSuchAWordNothingIsChanged) {
  const std::string plain = " Go forward, ten meters.";
  EXPECT_EQ(merged(plain, " Go for word 10 meter"), plain);
  EXPECT_EQ(merged(plain, ""), plain);
  EXPECT_EQ(merged(plain, plain), plain);
  EXPECT_EQ(merged("", ""), "");
}

TEST(ExpectedWordsTest, OtherDifferencesAreLeft) {
  EXPECT_EQ(merged(" Good morning, said mister Joannis, at the gate.",
                   " good morning said mister Joanis at a gate"),
            " Good morning, said mister Joanis, at the gate.");
}

TEST(ExpectedWordsTest, SeveralPlacesAreDecidedOneByOne) {
  EXPECT_EQ(merged(" Joannis works. Fore ever at the cnarc!", " Joanis works for ever at the CNRC"),
            " Joanis works. Fore ever at the CNRC!");
}

TEST(ExpectedWordsTest, AWordMayStandForSeveralAndSeveralForOne) {
  EXPECT_EQ(merged(" He is Joe Anne is, he says.", " He is Joanis he says."),
            " He is Joanis, he says.");
  EXPECT_EQ(merged(" From Newelm on.", " From New Elm on."), " From New Elm on.");
  EXPECT_EQ(merged(" From New Ellen on.", " From New Elm on."), " From New Elm on.");
}

TEST(ExpectedWordsTest, TheSpellingOfTheSettingsCounts) {
  EXPECT_EQ(merged(" On github it is.", " On GitHub it is."), " On GitHub it is.");
  EXPECT_EQ(merged(" git hub is there", " Github is there"), " Github is there");
}

TEST(ExpectedWordsTest, AWordThatIsSaidInBothTextsChangesNothing) {
  EXPECT_EQ(merged(" Joanis met an other.", " Joanis met another."), " Joanis met an other.");
}

TEST(ExpectedWordsTest, PartsOfLongerWordsDoNotCount) {
  EXPECT_EQ(merged(" It was Jonas's.", " It was Joanissa's."), " It was Jonas's.");
}

TEST(ExpectedWordsTest, WordsForWhichNothingWasHeardAreMadeUp) {
  EXPECT_EQ(merged("", " Joanis, CNRC"), "");
  EXPECT_EQ(merged(" Front center", " Front center Joanis"), " Front center");
}

TEST(ExpectedWordsTest, ATextThatConsistsOfTheHintIsMadeUp) {
  const std::string plain = " How old is the bridge that we have seen there?";
  EXPECT_EQ(merged(plain, " Joanis, CNRC, GitHub, Joanis, CNRC, GitHub, Joanis"), plain);
}

TEST(ExpectedWordsTest, TextWithoutBlanksIsTakenAsAWhole) {
  const std::vector<std::string> words = {"\u6771\u4EAC"};
  EXPECT_EQ(withExpectedWords("\u7B49\u5F37\u3067\u3059", "\u6771\u4EAC\u3067\u3059", words),
            "\u6771\u4EAC\u3067\u3059");
  EXPECT_EQ(withExpectedWords("\u7B49\u5F37\u3067\u3059", "\u7B49\u5F37\u3060", words),
            "\u7B49\u5F37\u3067\u3059");
}

TEST(ExpectedWordsTest, AWordIsFoundOnlyWholeAndInItsSpelling) {
  EXPECT_TRUE(hasWord(" the CNRC.", "CNRC"));
  EXPECT_TRUE(hasWord("New Elm", "New Elm"));
  EXPECT_FALSE(hasWord("the cnrc", "CNRC"));
  EXPECT_FALSE(hasWord("CNRCs", "CNRC"));
  EXPECT_FALSE(hasWord("text", ""));
}

}  // namespace
}  // namespace voxtrel::quillback
