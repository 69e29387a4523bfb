#include <gtest/gtest.h>

#include <string>

#include "common/settings/SettingsReader.h"
#include "common/settings/SettingsWriter.h"
#include "support/Blanks.h"

namespace voxtrel {
namespace {

const ModelSettings kFrench{"fr", true, "f6", "large-v3"};

std::string inModel(std::string_view content) {
  return updateOrInsert(content, "model", "language", "\"fr\"");
}

TEST(SettingsWriter, MakesNineLinesFromNothing) {
  EXPECT_EQ(withSettings("", ModelSettings()),
            "\n"
            "[model]\n"
            "translate = false\n"
            "language = \"auto\"\n"
            "whisper_model = \"large-v3\"\n"
            "\n"
            "[audio]\n"
            "hotkey = 'right_cmd'\n"
            "hotkey_code = 54");
}

TEST(SettingsWriter, ReplacesItsOwnLinesInPlaceAndNothingElse) {
  EXPECT_EQ(withSettings(withSettings("", ModelSettings()), kFrench),
            "\n"
            "[model]\n"
            "translate = true\n"
            "language = \"fr\"\n"
            "whisper_model = \"large-v3\"\n"
            "\n"
            "[audio]\n"
            "hotkey = 'f6'\n"
            "hotkey_code = 97");
}

TEST(SettingsWriter, KeepsACommentBesideTheLineItReplaces) {
  EXPECT_EQ(updateOrInsert("[model]\nwhisper_model = \"medium\"\n# mine\n", "model",
                           "whisper_model", "\"large-v3\""),
            "[model]\nwhisper_model = \"large-v3\"\n# mine\n");
}

TEST(SettingsWriter, FindsAKeyWhateverBlanksAreAroundItAndLosesTheNote) {
  EXPECT_EQ(
      updateOrInsert("[model]\n  language=\"de\"  # note\nb", "model", "language", "\"auto\""),
      "[model]\nlanguage = \"auto\"\nb");
  for (const std::string_view blank : kWhitespace) {
    const std::string b(blank);
    EXPECT_EQ(inModel(b + "[model]" + b + "\n" + b + "language" + b + "=x\n"),
              b + "[model]" + b + "\nlanguage = \"fr\"\n");
  }
}

TEST(SettingsWriter, AppendsASectionAfterOneEmptyLineWhereTheTextEndsInALineFeed) {
  EXPECT_EQ(updateOrInsert("[model]\na = 1\n", "audio", "hotkey_code", "54"),
            "[model]\na = 1\n\n[audio]\nhotkey_code = 54");
}

TEST(SettingsWriter, AppendsAnEmptyLineBeforeANewSectionWhereTheTextEndsInALine) {
  EXPECT_EQ(updateOrInsert("[model]\na = 1", "audio", "hotkey_code", "54"),
            "[model]\na = 1\n\n[audio]\nhotkey_code = 54");
  EXPECT_EQ(updateOrInsert(" ", "audio", "k", "1"), " \n\n[audio]\nk = 1");  // blank, not empty
}

TEST(SettingsWriter, InsertsUnderTheLastOfTwoHeaders) {
  EXPECT_EQ(inModel("[model]\na = 1\n[model]\nb = 2\n"),
            "[model]\na = 1\n[model]\nlanguage = \"fr\"\nb = 2\n");
  EXPECT_EQ(inModel("[model]\n[x]\n[model]"), "[model]\n[x]\n[model]\nlanguage = \"fr\"");
}

TEST(SettingsWriter, ReplacesTheFirstOfTwoLinesWithTheKey) {
  EXPECT_EQ(inModel("[model]\nlanguage = 1\nlanguage = 2\n[model]\nlanguage = 3"),
            "[model]\nlanguage = \"fr\"\nlanguage = 2\n[model]\nlanguage = 3");
  EXPECT_EQ(inModel("[model]\nx = 1\n[model]\nlanguage = 3"),
            "[model]\nx = 1\n[model]\nlanguage = \"fr\"");
}

TEST(SettingsWriter, LeavesAKeyOutsideItsSectionAlone) {
  EXPECT_EQ(updateOrInsert("hotkey = 0\n[model]\nhotkey = 1\n[audio]\n", "audio", "hotkey", "'f5'"),
            "hotkey = 0\n[model]\nhotkey = 1\n[audio]\nhotkey = 'f5'\n");
}

TEST(SettingsWriter, TakesOnlyTheExactHeaderForTheSection) {
  for (const char* header : {"[Model]", "[ model ]", "[model] # note", "[model", "[[model]]"}) {
    const std::string content = std::string(header) + "\nlanguage = \"de\"\n";
    EXPECT_EQ(inModel(content), content + "\n[model]\nlanguage = \"fr\"") << header;
  }
  EXPECT_EQ(inModel("[model]\n[Model]\nlanguage = 1"),
            "[model]\nlanguage = \"fr\"\n[Model]\nlanguage = 1");
}

TEST(SettingsWriter, TakesOnlyTheExactKeyBeforeTheFirstEqualsSign) {
  for (const char* line :
       {"Language = 1", "# language = 1", "source_language = 1", "language", "language 2 = 1",
        "\"language\" = 1", "a = language = 1", "= language"}) {
    EXPECT_EQ(inModel("[model]\n" + std::string(line)),
              "[model]\nlanguage = \"fr\"\n" + std::string(line));
  }
  EXPECT_EQ(inModel("[model]\nlanguage == = 1"), "[model]\nlanguage = \"fr\"");
}

TEST(SettingsWriter, PutsTheKeysAddedLastUnderTheHeader) {
  EXPECT_EQ(withSettings("[model]\nthreads = 4\n[audio]\nrate = 16000\n", kFrench),
            "[model]\ntranslate = true\nlanguage = \"fr\"\nwhisper_model = \"large-v3\"\n"
            "threads = 4\n[audio]\nhotkey = 'f6'\nhotkey_code = 97\nrate = 16000\n");
}

TEST(SettingsWriter, WritesValuesAsTheyAre) {
  const std::string text = withSettings("", {"a\"b", false, "shift+\\", "\\n"});
  EXPECT_NE(text.find("\nlanguage = \"a\"b\"\n"), std::string::npos);
  EXPECT_NE(text.find("\nhotkey = 'shift+\\'\nhotkey_code = 42"), std::string::npos);
  EXPECT_NE(text.find("\nwhisper_model = \"\\n\"\n"), std::string::npos);
}

TEST(SettingsWriter, GivesAnUnknownHotkeyTheDefaultsCodeAndAnAliasItsOwn) {
  EXPECT_NE(withSettings("", {"auto", false, "F5", "m"}).find("hotkey = 'F5'\nhotkey_code = 54"),
            std::string::npos);
  EXPECT_NE(withSettings("", {"auto", false, "right_option", "m"})
                .find("hotkey = 'right_option'\nhotkey_code = 61"),
            std::string::npos);
}

// Only "\n" ends a line here, so a header followed by "\r" is not recognised.
TEST(SettingsWriter, AppendsToAFileWithCarriageReturnsWhichTheReaderUnderstands) {
  const std::string old =
      "[model]\r\nlanguage = \"de\"\r\nwhisper_model = \"medium\"\r\n[audio]\r\nhotkey = 'f7'\r\n";
  const std::string text = withSettings(old, kFrench);
  EXPECT_EQ(text, old +
                      "\n[model]\ntranslate = true\nlanguage = \"fr\"\n"
                      "whisper_model = \"large-v3\"\n\n[audio]\nhotkey = 'f6'\nhotkey_code = 97");
  EXPECT_EQ(parseSettings(text), kFrench);
  EXPECT_EQ(parseWhisperModel(text), "medium");  // the first one counts there
  EXPECT_EQ(withSettings(text, kFrench), text);
}

TEST(SettingsWriter, LosesTheCarriageReturnOfALineItReplaces) {
  EXPECT_EQ(inModel("[model]\nlanguage = 1\r\nb = 2\r\n"), "[model]\nlanguage = \"fr\"\nb = 2\r\n");
}

TEST(SettingsWriter, EndsLinesAtNoOtherNewline) {
  for (const std::string_view newline : kNewlines) {
    if (newline == "\n") continue;
    const std::string content = "[model]\n# a" + std::string(newline) + "language = 1\n";
    EXPECT_EQ(inModel(content),
              "[model]\nlanguage = \"fr\"\n# a" + std::string(newline) + "language = 1\n");
  }
}

TEST(SettingsWriter, KeepsEveryByteOfALargeFileBesideItsLines) {
  std::string before, after;
  while (before.size() < 500'000) before += "# \xE6\xBC\xA2 [model]\nlanguage = none\n";
  while (after.size() < 500'000) after += "[other]\nlanguage = 'x'\n\n";
  EXPECT_EQ(inModel(before + "[model]\nlanguage = 1\n" + after),
            before + "[model]\nlanguage = \"fr\"\n" + after);
}

}  // namespace
}  // namespace voxtrel
