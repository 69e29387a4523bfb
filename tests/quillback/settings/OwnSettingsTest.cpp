#include <gmock/gmock.h>

#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

auto errorInLine(int line, const char* about) {
  return AllOf(StartsWith("[quillback] ERROR"), HasSubstr("line " + std::to_string(line) + ":"),
               HasSubstr(about));
}

/// The settings of a text without mistakes.
EngineSettings settingsOf(const std::string& text) {
  const SettingsReading reading = parseEngineSettings(text);
  EXPECT_THAT(reading.errors, IsEmpty()) << text;
  return reading.settings;
}

/// Expects one line about `line`, and the defaults.
void expectMistake(const std::string& text, int line, const char* about) {
  const SettingsReading reading = parseEngineSettings(text);
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(line, about))) << text;
  EXPECT_EQ(reading.settings.engineModel, "") << text;
  EXPECT_EQ(reading.settings.unloadAfter, std::nullopt) << text;
  EXPECT_EQ(reading.settings.prompt, "") << text;
  EXPECT_THAT(reading.settings.words, IsEmpty()) << text;
  EXPECT_EQ(reading.settings.threads, 0) << text;
  EXPECT_THAT(reading.settings.replace, IsEmpty()) << text;
}

TEST(OwnSettings, AreTheDefaultsWhereNothingIsSaid) {
  const EngineSettings settings = settingsOf("[engine]\n[model]\n[output]\n");
  EXPECT_EQ(settings.engineModel, "");
  EXPECT_EQ(settings.chosenModel(), "large-v3");
  EXPECT_EQ(settings.unloadAfter, std::nullopt);
  EXPECT_EQ(settings.prompt, "");
  EXPECT_THAT(settings.words, IsEmpty());
  EXPECT_EQ(settings.threads, 0);
  EXPECT_THAT(settings.replace, IsEmpty());
}

TEST(OwnSettings, TheEnginesModelGoesBeforeTheWindows) {
  const EngineSettings settings =
      settingsOf("[model]\nwhisper_model = \"large-v3\"\n[engine]\nmodel = \"parakeet-v3-q4_0\"\n");
  EXPECT_EQ(settings.model, "large-v3");
  EXPECT_EQ(settings.engineModel, "parakeet-v3-q4_0");
  EXPECT_EQ(settings.chosenModel(), "parakeet-v3-q4_0");
  EXPECT_EQ(settingsOf("[model]\nwhisper_model = \"base\"\n").chosenModel(), "base");
}

TEST(OwnSettings, AModelsNameIsSafeInAPath) {
  EXPECT_EQ(settingsOf("[engine]\nmodel = 'a.B-3_x'").engineModel, "a.B-3_x");
  for (const char* name : {"''", "'.hidden'", "'..'", "'a/b'", "'a b'", "'é'", "'a\"'", "3", "true",
                           "['base']", "\"a\\u0000\""}) {
    expectMistake("[engine]\nmodel = " + std::string(name), 2, "the engine's model");
  }
}

TEST(OwnSettings, WeightsAreUnloadedAfterSomeSeconds) {
  EXPECT_EQ(settingsOf("[engine]\nunload_after = 1").unloadAfter, std::chrono::seconds(1));
  EXPECT_EQ(settingsOf("[engine]\nunload_after = 600").unloadAfter, std::chrono::minutes(10));
  EXPECT_EQ(settingsOf("[engine]\nunload_after = 31536000").unloadAfter,
            std::chrono::hours(365 * 24));
  for (const char* value : {"0", "-1", "1.0", "'600'", "31536001", "9223372036854775807", "true"}) {
    expectMistake("[engine]\n\nunload_after = " + std::string(value), 3, "unload_after");
  }
}

TEST(OwnSettings, APromptIsAnyTextUpToItsLimit) {
  EXPECT_EQ(settingsOf("[model]\nprompt = \"He said: \\\"Grüße\\\".\"").prompt,
            "He said: \"Grüße\".");
  EXPECT_EQ(settingsOf("[model]\nprompt = '''one\ntwo'''").prompt, "one\ntwo");
  const std::string longest(1000, 'x');
  EXPECT_EQ(settingsOf("[model]\nprompt = '" + longest + "'").prompt, longest);
  expectMistake("[model]\nprompt = '" + longest + "y'", 2, "prompt");
  expectMistake("[model]\nprompt = ['a']", 2, "prompt");
}

TEST(OwnSettings, WordsAreAListWithLimits) {
  EXPECT_THAT(settingsOf("[model]\nwords = [\"Joanis\", \"CNRC\"]").words,
              ElementsAre("Joanis", "CNRC"));
  EXPECT_THAT(settingsOf("[model]\nwords = [ # names\n  'a b',\n\n  'é',\n]\n").words,
              ElementsAre("a b", "é"));
  EXPECT_THAT(settingsOf("[model]\nwords = []").words, IsEmpty());
  std::string list;
  for (int i = 0; i < 100; ++i) list += "'" + std::string(60, 'w') + "', ";
  EXPECT_EQ(settingsOf("[model]\nwords = [" + list + "]").words.size(), 100U);
  expectMistake("[model]\nwords = [" + list + "'w']", 2, "words");
  expectMistake("[model]\nwords = [\n'a',\n'" + std::string(61, 'w') + "']", 4, "words");
  expectMistake("[model]\nwords = ['a', '']", 2, "words");
  expectMistake("[model]\nwords = [\n'a', 3]", 3, "words");
  expectMistake("[model]\nwords = 'Joanis'", 2, "words");
}

TEST(OwnSettings, ThreadsAreAtMost256AndZeroMeansAllCores) {
  EXPECT_EQ(settingsOf("[model]\nthreads = 0").threads, 0);
  EXPECT_EQ(settingsOf("[model]\nthreads = 4").threads, 4);
  EXPECT_EQ(settingsOf("[model]\nthreads = 256").threads, 256);
  for (const char* value : {"-1", "257", "2.0", "'4'", "4294967297"}) {
    expectMistake("[model]\nthreads = " + std::string(value), 2, "threads");
  }
}

TEST(OwnSettings, NotificationsShowTheWordsOnlyIfAskedTo) {
  EXPECT_FALSE(settingsOf("[output]\n").notifyText);
  EXPECT_FALSE(settingsOf("[output]\nnotify_text = false").notifyText);
  EXPECT_TRUE(settingsOf("[output]\nnotify_text = true").notifyText);
  expectMistake("[output]\nnotify_text = 'yes'", 2, "notify_text");
}

TEST(OwnSettings, ReplacementsAreATableOrASection) {
  const std::vector<TextRule> expected = {{"full stop", "."}, {"new line", "\n"}};
  EXPECT_EQ(
      settingsOf("[output]\nreplace = { \"new line\" = \"\\n\", \"full stop\" = \".\" }").replace,
      expected);
  EXPECT_EQ(settingsOf("[output.replace]\n\"new line\" = \"\\n\"\n'full stop' = '.'\n").replace,
            expected);
  EXPECT_EQ(settingsOf("[output]\nreplace.um = ''").replace, (std::vector<TextRule>{{"um", ""}}));
}

TEST(OwnSettings, ReplacementsHaveLimits) {
  std::string rules = "[output.replace]\n";
  for (int i = 0; i < 200; ++i) rules += "k" + std::to_string(i) + " = 'x'\n";
  EXPECT_EQ(settingsOf(rules).replace.size(), 200U);
  expectMistake(rules + "more = 'x'\n", 1, "replace");
  expectMistake("[output]\nreplace = 3", 2, "replace");
  expectMistake("[output]\nreplace = ['a', 'b']", 2, "replace");
  expectMistake("[output.replace]\na = 'x'\nb = 3\n", 3, "replace");
  expectMistake("[output.replace]\na = 'x'\n' ' = 'y'\n", 3, "replace");
  expectMistake("[output.replace]\na = 'x'\n'' = 'y'\n", 3, "replace");
  expectMistake("[output.replace]\na.b = 'x'\n", 2, "replace");
}

TEST(OwnSettings, EachMistakeIsOneLineAndLeavesTheOtherKeysAlone) {
  const SettingsReading reading = parseEngineSettings(
      "[engine]\nmodel = 'a/b'\nunload_after = 0\n[model]\nprompt = 1\nwords = 'w'\nthreads = 999\n"
      "[output]\ninsert = 'none'\nreplace = 3\n");
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(2, "model"), errorInLine(3, "unload_after"),
                                          errorInLine(5, "prompt"), errorInLine(6, "words"),
                                          errorInLine(7, "threads"), errorInLine(10, "replace")));
  EXPECT_EQ(reading.settings.insert, EngineSettings::Insert::none);
}

TEST(OwnSettings, ASectionThatIsNoneIsOneMistake) {
  expectMistake("engine = 'base'\n", 1, "engine must be a section");
  expectMistake("model = 'base'\n", 1, "model must be a section");
  expectMistake("[[model]]\nwords = ['a']\n", 1, "model must be a section");
  expectMistake("output = []\n", 1, "output must be a section");
}

TEST(OwnSettings, KeepTheirDefaultsWhereTheTextIsNotToml) {
  expectMistake(
      "[engine]\nmodel = 'base'\nunload_after = 9\n[model]\nprompt = 'p'\nwords = ['w']\nthreads = "
      "2\n"
      "[output.replace]\na = 'b'\nnote = hello\n",
      10, "TOML");
}

}  // namespace
}  // namespace voxtrel::quillback
