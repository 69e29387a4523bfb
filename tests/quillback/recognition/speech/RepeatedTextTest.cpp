#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quillback/recognition/speech/RepeatedText.h"

namespace voxtrel::quillback {
namespace {

std::string times(int count, std::string_view phrase, std::string_view between = " ") {
  std::string text;
  for (int i = 0; i < count; ++i) text.append(i == 0 ? "" : between).append(phrase);
  return text;
}

void expectCut(const std::string& text, const std::string& left) {
  const CutText cut = cutRepetition(text);
  EXPECT_TRUE(cut.wasCut) << text;
  EXPECT_EQ(cut.text, left);
}

void expectWhole(const std::string& text) {
  const CutText cut = cutRepetition(text);
  EXPECT_FALSE(cut.wasCut) << text;
  EXPECT_EQ(cut.text, text);
}

TEST(RepeatedText, OrdinaryTextsStay) {
  for (const char* text : {"",
                           " ",
                           "one",
                           "no no no",
                           "ha ha ha ha",
                           "1 1 1 1",
                           "No, no, no, no, no!",
                           "Ha ha ha ha ha ha.",
                           "very very very very good",
                           "one zero zero zero zero zero zero",
                           "0 0 0 0 0 0 0 0 0 0",
                           "12 34 12 34 12 34 12 34 12 34 12 34",
                           "bye bye, bye bye, bye bye",
                           "left, right, left, right, left, right, left",
                           "hahahahahahahahahahahaha",
                           "1111111111111111",
                           "to be or not to be, to be or not to be",
                           "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF",
                           "- - - - - - - - - - - -",
                           "................................",
                           "We will rock you. We will rock you. We will rock you."}) {
    expectWhole(text);
  }
  for (const char* text : {"はははははははは", "だめだめだめだめ", "ลองลองลองลอง"})
    expectWhole(text);
}

TEST(RepeatedText, ARepeatedPhraseIsLeftOnce) {
  expectCut(times(5, "front, left"), "front, left");
  expectCut(times(40, "I'm going to go."), "I'm going to go.");
  expectCut("So, " + times(9, "thank you very much,") + " thank you", "So, thank you very much");
  expectCut("one two three " + times(12, "and then"), "one two three and then");
}

TEST(RepeatedText, CaseAndPunctuationDoNotMatter) {
  expectCut("Front, left Front left front, LEFT Front, left. Front - left!", "Front, left");
}

TEST(RepeatedText, TheLastRepetitionMayBeIncomplete) {
  expectCut(times(5, "we are the") + " we are", "we are the");
  expectCut(times(5, "we are there") + " we are th", "we are there");
}

TEST(RepeatedText, EachLengthHasItsOwnLimit) {
  const auto limitOf = [](const std::string& phrase, const std::string& between = " ") {
    for (int count = 2; count < 40; ++count) {
      if (cutRepetition("x " + times(count, phrase, between)).wasCut) return count;
    }
    return 0;
  };
  EXPECT_EQ(limitOf("yes"), 8);
  EXPECT_EQ(limitOf("7"), 12);
  EXPECT_EQ(limitOf("12 34"), 12);
  EXPECT_EQ(limitOf("yes and"), 5);
  EXPECT_EQ(limitOf("a b c d e f"), 5);
  EXPECT_EQ(limitOf("a b c d e f g"), 3);
  EXPECT_EQ(limitOf("a b c d e f g h i j k l"), 3);
  EXPECT_EQ(limitOf("a b c d e f g h i j k l m"), 0);
  EXPECT_EQ(limitOf("は", ""), 15);
  EXPECT_EQ(limitOf("ありがとう", ""), 5);
}

TEST(RepeatedText, PhrasesWithoutBlanksCountByCharacters) {
  expectCut(times(7, "ご視聴ありがとうございました。", ""), "ご視聴ありがとうございました。");
  expectCut("你好。" + times(6, "请不吝点赞", "") + "请不", "你好。请不吝点赞");
  expectCut(times(60, "啊", ""), "啊");
}

TEST(RepeatedText, OnlyTheEndCounts) {
  expectWhole(times(9, "well then") + " that was it");
}

TEST(RepeatedText, AnEndlessTextIsCutQuickly) {
  expectCut(times(20'000, "over and over"), "over and over");
  expectCut(times(20'000, "啊呀", ""), "啊呀");
}

}  // namespace
}  // namespace voxtrel::quillback
