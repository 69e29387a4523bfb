#include <gmock/gmock.h>

#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Insert = EngineSettings::Insert;

constexpr const char* kError = "[quillback] ERROR";

auto errorInLine(int line, const char* about) {
  return AllOf(StartsWith(kError), HasSubstr("line " + std::to_string(line) + ":"),
               HasSubstr(about));
}

TEST(EngineSettings, AreTheDefaultsWhereNothingIsSaid) {
  const SettingsReading reading = parseSettings("");
  EXPECT_THAT(reading.errors, IsEmpty());
  EXPECT_EQ(reading.settings.model, "large-v3");
  EXPECT_EQ(reading.settings.language, "auto");
  EXPECT_FALSE(reading.settings.translate);
  EXPECT_EQ(reading.settings.hotkey.name, "right_cmd");
  EXPECT_EQ(reading.settings.insert, Insert::type);
}

TEST(EngineSettings, AreReadFromWhatTheApplicationWrites) {
  const SettingsReading reading = parseSettings(
      "\n[model]\ntranslate = true\nlanguage = \"de\"\nwhisper_model = \"large-v3\"\n\n[audio]\n"
      "hotkey = 'shift+\\'\nhotkey_code = 42");
  EXPECT_THAT(reading.errors, IsEmpty());
  EXPECT_TRUE(reading.settings.translate);
  EXPECT_EQ(reading.settings.language, "de");
  EXPECT_EQ(reading.settings.hotkey.name, "shift+\\");
  EXPECT_TRUE(reading.settings.hotkey.needsShift);
}

TEST(EngineSettings, KnowEveryWayToInsert) {
  EXPECT_EQ(parseSettings("[output]\ninsert = \"type\"").settings.insert, Insert::type);
  EXPECT_EQ(parseSettings("[output]\ninsert = \"clipboard\"").settings.insert, Insert::clipboard);
  EXPECT_EQ(parseSettings("[output]\ninsert = 'none'").settings.insert, Insert::none);
}

TEST(EngineSettings, TheCodeOfAHotkeyCountsMoreThanItsName) {
  EXPECT_EQ(parseSettings("[audio]\nhotkey = 'f6'\nhotkey_code = 96").settings.hotkey.name, "f5");
  EXPECT_EQ(parseSettings("[audio]\nhotkey_code = 54\nhotkey = 'f7'").settings.hotkey.name,
            "right_cmd");
  EXPECT_EQ(parseSettings("[audio]\nhotkey = 'right_option'").settings.hotkey.code, 61);
}

TEST(EngineSettings, ANameThatTheCodeOverrulesMayBeAnything) {
  EXPECT_THAT(parseSettings("[audio]\nhotkey = 'caps'\nhotkey_code = 54").errors, IsEmpty());
}

TEST(EngineSettings, TheNameCountsWhereTheCodeIsNoKeys) {
  const SettingsReading reading = parseSettings("[audio]\nhotkey = 'f6'\nhotkey_code = 99");
  EXPECT_EQ(reading.settings.hotkey.name, "f6");
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(3, "hotkey_code")));
}

TEST(EngineSettings, AMistakeInOneKeyLeavesTheOthersAlone) {
  const SettingsReading reading = parseSettings(
      "[model]\n"
      "whisper_model = 3\n"
      "language = ''\n"
      "translate = \"true\"\n"
      "[audio]\n"
      "hotkey_code = 'f5'\n"
      "hotkey = 'F5'\n"
      "[output]\n"
      "insert = 'paste'\n");
  EXPECT_THAT(reading.errors,
              ElementsAre(errorInLine(2, "whisper_model"), errorInLine(3, "language"),
                          errorInLine(4, "translate"), errorInLine(6, "hotkey_code"),
                          errorInLine(7, "hotkey"), errorInLine(9, "insert")));
  EXPECT_EQ(reading.settings.model, "large-v3");
  const SettingsReading good = parseSettings("[model]\ntranslate = 1\nlanguage = 'fr'");
  EXPECT_EQ(good.settings.language, "fr");
  EXPECT_EQ(good.errors.size(), 1U);
}

TEST(EngineSettings, ASectionThatIsNoneIsOneMistake) {
  const SettingsReading reading = parseSettings("output = 3\nmodel = 'large'\n");
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(2, "model"), errorInLine(1, "output")));
}

TEST(EngineSettings, AFileThatIsNoTomlGivesTheDefaultsAndItsLine) {
  const SettingsReading reading = parseSettings("[model]\nlanguage = \"de\"\ntranslate = True\n");
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(3, "TOML")));
  EXPECT_EQ(reading.settings.language, "auto");
  EXPECT_THAT(parseSettings("[model]\nlanguage = 'a'\nlanguage = 'b'").errors,
              ElementsAre(errorInLine(3, "TOML")));
  EXPECT_THAT(parseSettings("\xFF\xFE").errors, ElementsAre(errorInLine(1, "TOML")));
}

TEST(EngineSettings, MayBeginWithAByteOrderMarkAndEndTheirLinesAsOthersDo) {
  const SettingsReading reading =
      parseSettings("\xEF\xBB\xBF[model]\r\nlanguage = \"es\" # Spanish\r\n");
  EXPECT_THAT(reading.errors, IsEmpty());
  EXPECT_EQ(reading.settings.language, "es");
}

TEST(EngineSettings, WhatAFileSaysNeverPassesForALineOfTheEngines) {
  for (const char* text :
       {"[audio]\nhotkey = 'Ready.'", "[model]\nwhisper_model = { 'Recording...' = 1 }",
        "[output]\ninsert = 'encode='", "Ready. = 1", "[model]\nx = 1\n'Ready.' = 1\n'Ready.' = 2",
        "[model]\ntranslate = Ready.", "[model]\ntranslate = 'Ready.'"}) {
    const SettingsReading reading = parseSettings(text);
    ASSERT_EQ(reading.errors.size(), 1U) << text;
    EXPECT_THAT(reading.errors[0],
                testing::Not(testing::AnyOf(HasSubstr("Ready."), HasSubstr("Recording..."),
                                            HasSubstr("encode="))));
  }
}

TEST(EngineSettings, KeysAndSectionsOfOthersAreNobodysMistake) {
  EXPECT_THAT(parseSettings("a = 1\n[model]\nb = 2\n[x.y]\nz = []\n[[list]]\n").errors, IsEmpty());
}

TEST(EngineSettings, DeepNestingIsAMistakeAndNoCrash) {
  EXPECT_EQ(parseSettings("a = " + std::string(100'000, '[')).errors.size(), 1U);
}

}  // namespace
}  // namespace voxtrel::quillback
