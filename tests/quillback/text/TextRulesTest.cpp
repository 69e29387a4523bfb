#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "quillback/text/TextRules.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;

const std::vector<TextRule> kRules = {
    {"new line", "\n"}, {"new paragraph", "\n\n"}, {"full stop", "."},
    {"stop", "STOP"},   {"question mark", "?"},    {"exclamation mark", "!"},
    {"comma", ","},     {"open bracket", "("},     {"close bracket", ")"},
    {"um", ""},         {"voxtrel", "Voxtrel"},    {"à la ligne", "\n"},
    {"句号", "。"},     {"fragezeichen", " ?"}};

std::string written(std::string_view said) {
  return replaced(said, kRules);
}

TEST(TextRules, ATextWithoutPhrasesStaysAsItIs) {
  for (const char* text : {"", " ", "a  b ", "Renew lines, full stops and commas.", "a\xFF\xC3(b",
                           "stopwatch nonstop", "é你😀"}) {
    EXPECT_EQ(written(text), text);
    EXPECT_EQ(replaced(text, {}), text);
  }
}

TEST(TextRules, APhraseIsFoundInAnyCaseAsWholeWords) {
  EXPECT_EQ(written("Try VOXTREL now"), "Try Voxtrel now");
  EXPECT_EQ(written("(voxtrel) voxtrel's voxtrels"), "(Voxtrel) Voxtrel's voxtrels");
  EXPECT_EQ(written("a New  Line b"), "a\nb");
  EXPECT_EQ(written("voxtrelé évoxtrel voxtrel1"), "voxtrelé évoxtrel voxtrel1");
  EXPECT_EQ(written("Bonjour. À La Ligne Salut"), "Bonjour.\nSalut");
}

TEST(TextRules, UpperCaseIsKnownInSeveralAlphabets) {
  for (const auto& [rule, said] :
       std::vector<std::pair<std::string, std::string>>{{"точка", "ТОЧКА"},
                                                        {"ѓ", "Ѓ"},
                                                        {"τελεία", "ΤΕΛΕίΑ"},
                                                        {"žluť", "ŽLUŤ"},
                                                        {"ÿ", "Ÿ"},
                                                        {"grüße", "GRÜßE"},
                                                        {"ł", "Ł"},
                                                        {"ď", "Ď"},
                                                        {"don't", "Don’t"}}) {
    EXPECT_EQ(replaced(said, {{rule, "x"}}), "x") << said;
  }
  EXPECT_EQ(replaced("×", {{"÷", "x"}}), "×");
}

TEST(TextRules, TheLongestPhraseCounts) {
  EXPECT_EQ(written("full stop"), ".");
  EXPECT_EQ(written("stop"), "STOP");
  EXPECT_EQ(replaced("a b c", {{"a", "1"}, {"A b", "2"}, {"b c", "3"}}), "2 c");
}

TEST(TextRules, WhatWasInsertedIsNotSearched) {
  EXPECT_EQ(replaced("a", {{"a", "b"}, {"b", "c"}}), "b");
}

TEST(TextRules, MarksAndNewlinesTakeBlanksAway) {
  EXPECT_EQ(written("how are you question mark fine"), "how are you? fine");
  EXPECT_EQ(written("one new line two"), "one\ntwo");
  EXPECT_EQ(written("one new paragraph two new line"), "one\n\ntwo\n");
  EXPECT_EQ(written("one full stop new line new line two"), "one.\n\ntwo");
  EXPECT_EQ(written("new line"), "\n");
  EXPECT_EQ(written("see open bracket one close bracket there"), "see (one) there");
  EXPECT_EQ(written("wie fragezeichen gut"), "wie ? gut");
}

TEST(TextRules, AnEmptyReplacementLeavesOneBlank) {
  EXPECT_EQ(written("I um think"), "I think");
  EXPECT_EQ(written("Um, I think, um, so um"), "I think, so");
  EXPECT_EQ(written("um"), "");
}

TEST(TextRules, MarksOfTheRecogniserAroundACommandAreDropped) {
  EXPECT_EQ(written("First line. New line. Second line."), "First line.\nSecond line.");
  EXPECT_EQ(written("Hello, full stop. How are you, question mark?"), "Hello. How are you?");
  EXPECT_EQ(written("Dear Anne, comma, new line, thank you."), "Dear Anne,\nthank you.");
  EXPECT_EQ(written("why question mark exclamation mark"), "why?!");
  EXPECT_EQ(written("new line .5 and comma.net"), "\n.5 and,.net");
}

TEST(TextRules, PhrasesOfScriptsWithoutBlanksAreFoundBetweenLetters) {
  EXPECT_EQ(written("你好句号再见"), "你好。再见");
}

TEST(TextRules, APhraseOfBlanksIsIgnored) {
  EXPECT_EQ(replaced("a b", {{" ", "x"}, {"", "y"}}), "a b");
}

TEST(TextRules, InvisibleCharactersAreDropped) {
  EXPECT_EQ(withoutInvisible("\uFEFFa\u200Bb\u202A\u202B\u202C\u202D\u202E"
                             "c\u2066\u2067\u2068\u2069"),
            "abc");
  for (const char* text : {"", "a b", "می\u200Cخواهم", "👩\u200D🚀", "\u2065\u206A\u2029",
                           "\xFF\xE2\x80", "\u202F\u200A"}) {
    EXPECT_EQ(withoutInvisible(text), text);
  }
}

TEST(ReplacingSink, InsertsTheReplacedTextUnlessNothingIsLeft) {
  struct Kept final : TextSink {
    explicit Kept(std::vector<std::string>& inserted) : texts(inserted) {}
    void insert(const std::string& text, OnInserted onInserted) override {
      texts.push_back(text);
      onInserted();
    }
    std::vector<std::string>& texts;
  };
  std::vector<std::string> texts;
  ReplacingSink sink(std::make_unique<Kept>(texts), kRules);
  int inserted = 0;
  sink.insert("one new line two", [&] { ++inserted; });
  sink.insert("um", [&] { ++inserted; });
  EXPECT_THAT(texts, ElementsAre("one\ntwo"));
  EXPECT_EQ(inserted, 2);
}

}  // namespace
}  // namespace voxtrel::quillback
