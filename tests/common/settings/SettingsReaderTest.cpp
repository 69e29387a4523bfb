#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "common/settings/SettingsReader.h"
#include "support/Blanks.h"

namespace voxtrel {
namespace {

ModelSettings inModel(const std::string& lines) {
  return parseSettings("[model]\n" + lines);
}
ModelSettings inAudio(const std::string& lines) {
  return parseSettings("[audio]\n" + lines);
}

TEST(Settings, AreTheDefaultsWhereTheFileSaysNothing) {
  const ModelSettings settings;
  EXPECT_EQ(settings.language, "auto");
  EXPECT_FALSE(settings.translate);
  EXPECT_EQ(settings.hotkey, "right_cmd");
  EXPECT_EQ(settings.model, "large-v3");
  EXPECT_EQ(parseSettings(""), settings);
  EXPECT_EQ(parseSettings("[model]\n[audio]\n"), settings);
  EXPECT_EQ(parseWhisperModel(""), "large-v3");
  EXPECT_EQ(parseWhisperModel("[model]\nlanguage = \"de\"\n"), "large-v3");
}

TEST(Settings, AreReadFromTheirSections) {
  const ModelSettings settings = parseSettings(
      "[model]\nwhisper_model = \"medium\"\nlanguage = \"de\"\ntranslate = true\n\n"
      "[audio]\nhotkey_code = 97\nhotkey = 'f7'\n");
  EXPECT_EQ(settings, (ModelSettings{"de", true, "f7", "medium"}));
}

TEST(Settings, TranslateOnlyForTheBareWordTrue) {
  EXPECT_TRUE(inModel("translate = true").translate);
  EXPECT_TRUE(inModel("translate=\t true \t").translate);
  for (const std::string value :
       {"\"true\"", "True", "TRUE", "1", "yes", "true # yes", "", "tru"}) {
    EXPECT_FALSE(inModel("translate = true\ntranslate = " + value).translate) << value;
  }
}

TEST(Settings, TakeTheHotkeyFromItsCodeWhereNoNameIsGiven) {
  EXPECT_EQ(inAudio("hotkey_code = 96").hotkey, "f5");
  EXPECT_EQ(inAudio("hotkey_code = 42").hotkey, "shift+\\");
  EXPECT_EQ(inAudio("hotkey_code = 55").hotkey, "right_cmd");
  EXPECT_EQ(inAudio("hotkey_code = -1").hotkey, "right_cmd");
  EXPECT_EQ(inAudio("hotkey_code = 96\nhotkey_code = 97").hotkey, "f5");
}

TEST(Settings, PreferTheHotkeysNameToItsCodeUnlessItIsTheDefault) {
  EXPECT_EQ(inAudio("hotkey = \"f6\"\nhotkey_code = 96").hotkey, "f6");
  EXPECT_EQ(inAudio("hotkey_code = 96\nhotkey = 'f7'").hotkey, "f7");
  EXPECT_EQ(inAudio("hotkey = \"right_cmd\"\nhotkey_code = 97").hotkey, "f6");
  EXPECT_EQ(inAudio("hotkey = right_command\nhotkey_code = 97").hotkey, "right_command");
}

TEST(Settings, TakeOnlyWholeNumbersThatFitAsACode) {
  for (const std::string value : {"96", "+96", "0096", "+0000000000000000000000000096"}) {
    EXPECT_EQ(inAudio("hotkey_code = " + value).hotkey, "f5") << value;
  }
  for (const std::string value :
       {"", "+", "-", "+-96", "-+96", "++96", "- 96", "-96", "96.0", "0x60", "96 # F5", "\"96\"",
        "'96'", "9 6", "18446744073709551712", "9223372036854775808", "\xD9\xA9\xD9\xA6"}) {
    EXPECT_EQ(inAudio("hotkey_code = " + value).hotkey, "right_cmd") << value;
  }
}

TEST(Settings, KeepTheHotkeysNameAsItIs) {
  EXPECT_EQ(inAudio("hotkey = right_command").hotkey, "right_command");
  EXPECT_EQ(inAudio("hotkey = 'shift+\\'").hotkey, "shift+\\");
  EXPECT_EQ(inAudio("hotkey = F5").hotkey, "F5");
}

TEST(Settings, LoseEveryQuoteAtTheEndsAndNoneInside) {
  EXPECT_EQ(inModel("language = \"\"\"a\"b'\"\"").language, "a\"b'");
  EXPECT_EQ(inModel("language = 'en'").language, "'en'");
  EXPECT_EQ(inAudio("hotkey = '\"'a'\"b'\"\"'").hotkey, "a'\"b");
  EXPECT_EQ(inModel("language = \"en\" # English").language, "en\" # English");
  EXPECT_EQ(inModel("language = \" en \"").language, " en ");
}

TEST(Settings, TakeAnEmptyValueAsItIs) {
  EXPECT_EQ(inModel("whisper_model = \"\"").model, "");
  EXPECT_EQ(parseWhisperModel("[model]\nwhisper_model = \"\"").size(), 0U);
  EXPECT_EQ(inModel("language =").language, "");
  EXPECT_EQ(inModel("language = \"\"\"").language, "");
  EXPECT_EQ(inAudio("hotkey=").hotkey, "");
}

TEST(Settings, AreFoundAnywhereInALineCommentsIncluded) {
  EXPECT_EQ(inModel("# language = \"en\"").language, "en");
  EXPECT_EQ(inModel("source_language = x").language, "x");
  EXPECT_EQ(inModel("languagelanguage = x").language, "x");
  EXPECT_EQ(inModel("language of languages: language = x = y").language, "x = y");
  EXPECT_EQ(inModel("language language = language = x").language, "language = x");
}

TEST(Settings, GiveALineToTheFirstKeyThatIsInIt) {
  const ModelSettings model = inModel("whisper_model = translate = language = \"x\"");
  EXPECT_EQ(model, (ModelSettings{"x", false, "right_cmd", "large-v3"}));
  EXPECT_EQ(inAudio("hotkey_code = 96 hotkey = x").hotkey, "x");
  // The start-up check looks for the model only.
  EXPECT_EQ(parseWhisperModel("[model]\nwhisper_model = translate = language = \"x\""),
            "translate = language = \"x");
}

TEST(Settings, HaveKeysThatAreReadWithTheirCase) {
  EXPECT_EQ(inModel("Language = x\nTRANSLATE = true\nwhisper-model = y\nwhisper_Model = y"),
            ModelSettings());
  EXPECT_EQ(inModel("language: x\nlanguage x = y"), ModelSettings());
}

TEST(Settings, AreIgnoredInTheWrongSection) {
  EXPECT_EQ(inModel("hotkey = f5\nhotkey_code = 96"), ModelSettings());
  EXPECT_EQ(inAudio("language = x\ntranslate = true\nwhisper_model = y"), ModelSettings());
  EXPECT_EQ(parseSettings("language = x\nhotkey = f5"), ModelSettings());
  EXPECT_EQ(parseSettings("[model]\n[other]\nlanguage = x"), ModelSettings());
  EXPECT_EQ(parseWhisperModel("whisper_model = x\n[audio]\nwhisper_model = y"), "large-v3");
}

TEST(Settings, KnowTheirSectionsByExactlyTheirHeaders) {
  EXPECT_EQ(parseSettings("  [model]  \nlanguage = x").language, "x");
  EXPECT_EQ(parseWhisperModel("\t[model]\xC2\xA0\nwhisper_model = x"), "x");
  for (const std::string header : {"[Model]", "[ model ]", "[model] # note", "[model", "[[model]]",
                                   "[model]]", "model", "[model.sub]"}) {
    EXPECT_EQ(parseSettings(header + "\nlanguage = x").language, "auto") << header;
    EXPECT_EQ(parseWhisperModel(header + "\nwhisper_model = x"), "large-v3") << header;
  }
  EXPECT_EQ(inModel("[ = 1\nlanguage = x").language, "auto");  // any bracket begins a section
}

TEST(Settings, ComeBackToASectionThatIsOpenedAgain) {
  EXPECT_EQ(parseSettings("[model]\nlanguage = a\n[audio]\nhotkey = f8\n[model]\nlanguage = b"),
            (ModelSettings{"b", false, "f8", "large-v3"}));
}

TEST(Settings, HaveTheLastModelWhereTheStartUpCheckHasTheFirst) {
  const std::string text =
      "[model]\nwhisper_model = \"a\"\n[audio]\n[model]\nwhisper_model = \"b\"\n";
  EXPECT_EQ(parseSettings(text).model, "b");
  EXPECT_EQ(parseWhisperModel(text), "a");
}

TEST(Settings, StandOnLinesThatEndInAnyNewline) {
  for (const std::string_view newline : kNewlines) {
    const std::string end(newline);
    const std::string text = "[model]" + end + "language = de" + end + "translate = true" + end;
    EXPECT_EQ(parseSettings(text), (ModelSettings{"de", true, "right_cmd", "large-v3"}));
    EXPECT_EQ(inModel("language" + end + "= x").language, "auto");
  }
  EXPECT_EQ(parseSettings("[model]\r\nlanguage = de\r\n").language, "de");
}

TEST(Settings, MayHaveAnyWhitespaceAroundTheEqualsSignAndTheLine) {
  for (const std::string_view blank : kWhitespace) {
    const std::string b(blank);
    EXPECT_EQ(inModel(b + "language" + b + b + "=" + b + "de" + b + "at" + b).language,
              "de" + b + "at");
    EXPECT_TRUE(inModel("translate=" + b + "true" + b).translate);
    EXPECT_EQ(parseWhisperModel("[model]\n" + b + "whisper_model" + b + "=" + b + "m" + b), "m");
  }
}

TEST(Settings, AreNotFoundInASectionBehindAByteOrderMark) {
  EXPECT_EQ(parseSettings("\xEF\xBB\xBF[model]\nlanguage = de").language, "auto");
}

}  // namespace
}  // namespace voxtrel
