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

std::string_view hotkeyOf(std::string_view text) {
  return parseEngineSettings(text).settings.hotkey.name;
}

TEST(EngineSettings, AreTheDefaultsWhereNothingIsSaid) {
  const SettingsReading reading = parseEngineSettings("");
  EXPECT_THAT(reading.errors, IsEmpty());
  EXPECT_EQ(reading.settings.model, "large-v3");
  EXPECT_EQ(reading.settings.language, "auto");
  EXPECT_FALSE(reading.settings.translate);
  EXPECT_EQ(reading.settings.hotkey.name, "right_cmd");
  EXPECT_EQ(reading.settings.insert, Insert::type);
}

TEST(EngineSettings, AreReadFromWhatTheApplicationWrites) {
  const SettingsReading reading = parseEngineSettings(
      "\n[model]\ntranslate = true\nlanguage = \"de\"\nwhisper_model = \"large-v3\"\n\n[audio]\n"
      "hotkey = 'shift+\\'\nhotkey_code = 42");
  EXPECT_THAT(reading.errors, IsEmpty());
  EXPECT_TRUE(reading.settings.translate);
  EXPECT_EQ(reading.settings.language, "de");
  EXPECT_EQ(reading.settings.hotkey.name, "shift+\\");
  EXPECT_TRUE(reading.settings.hotkey.needsShift);
}

TEST(EngineSettings, KnowEveryWayToInsert) {
  const auto insertOf = [](const char* text) { return parseEngineSettings(text).settings.insert; };
  EXPECT_EQ(insertOf("[output]\ninsert = \"type\""), Insert::type);
  EXPECT_EQ(insertOf("[output]\ninsert = \"clipboard\""), Insert::clipboard);
  EXPECT_EQ(insertOf("[output]\ninsert = 'none'"), Insert::none);
  const auto pasteOf = [](const char* text) { return parseEngineSettings(text).settings.paste; };
  using PasteKey = EngineSettings::PasteKey;
  EXPECT_EQ(pasteOf(""), PasteKey::ctrlV);
  EXPECT_EQ(pasteOf("[output]\npaste = 'ctrl+v'"), PasteKey::ctrlV);
  EXPECT_EQ(pasteOf("[output]\npaste = 'ctrl+shift+v'"), PasteKey::ctrlShiftV);
  EXPECT_EQ(pasteOf("[output]\npaste = 'shift+insert'"), PasteKey::shiftInsert);
  EXPECT_THAT(parseEngineSettings("[output]\npaste = 'ctrl+p'").errors,
              ElementsAre(errorInLine(2, "paste")));
}

TEST(EngineSettings, TheNameOfAHotkeyCountsMoreThanItsCodeUnlessItIsTheDefault) {
  EXPECT_EQ(hotkeyOf("[audio]\nhotkey = 'f6'\nhotkey_code = 96"), "f6");
  EXPECT_EQ(hotkeyOf("[audio]\nhotkey_code = 54\nhotkey = 'f7'"), "f7");
  EXPECT_EQ(hotkeyOf("[audio]\nhotkey = \"right_cmd\"\nhotkey_code = 97"), "f6");
  EXPECT_EQ(hotkeyOf("[audio]\nhotkey_code = 96"), "f5");
  EXPECT_EQ(hotkeyOf("[audio]\nhotkey = right_option"), "right_opt");
}

TEST(EngineSettings, AnUnknownNameIsAMistakeThatNoCodeMakesGood) {
  const SettingsReading reading = parseEngineSettings("[audio]\nhotkey = 'caps'\nhotkey_code = 97");
  EXPECT_EQ(reading.settings.hotkey.name, "right_cmd");
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(2, "hotkey is not the name")));
}

TEST(EngineSettings, TheNameCountsWhereTheCodeIsNoKeys) {
  const SettingsReading reading = parseEngineSettings("[audio]\nhotkey = 'f6'\nhotkey_code = 99");
  EXPECT_EQ(reading.settings.hotkey.name, "f6");
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(3, "hotkey_code")));
}

TEST(EngineSettings, AMistakeInOneKeyLeavesTheOthersAlone) {
  const SettingsReading reading = parseEngineSettings(
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
              ElementsAre(errorInLine(4, "translate"), errorInLine(6, "hotkey_code"),
                          errorInLine(7, "hotkey"), errorInLine(9, "insert")));
  EXPECT_EQ(reading.settings.model, "3");
  EXPECT_EQ(reading.settings.language, "''");
  EXPECT_FALSE(reading.settings.translate);
  EXPECT_EQ(reading.settings.hotkey.name, "right_cmd");
  EXPECT_EQ(reading.settings.insert, Insert::type);
}

TEST(EngineSettings, OnlyTheLastOfTwoValuesCanBeAMistake) {
  EXPECT_THAT(
      parseEngineSettings("[audio]\nhotkey = 'caps'\n[x]\n[model]\n[y]\n[z]\n").errors.size(), 1U);
  const SettingsReading reading =
      parseEngineSettings("[audio]\nhotkey = 'caps'\n#\nhotkey = 'f5'\n");
  EXPECT_EQ(reading.settings.hotkey.name, "f5");
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(4, "TOML")));  // the key is there twice
}

TEST(EngineSettings, AnOutputThatIsNoSectionIsAMistake) {
  EXPECT_THAT(parseEngineSettings("\noutput = 3\nlarge = 'model'\n").errors,
              ElementsAre(errorInLine(2, "output must be a section")));
}

TEST(EngineSettings, AFileThatIsNotTomlLosesOnlyTheEnginesOwnKeys) {
  for (const char* foreign : {"note = hello", "[model]\nlanguage = \"de\"", "[audio", "x = [1"}) {
    const SettingsReading reading = parseEngineSettings(
        "[model]\r\nlanguage = \"de\"\r\ntranslate = true\r\nwhisper_model = \"m\"\r\n"
        "[audio]\r\nhotkey = 'f6'\r\n[output]\r\ninsert = 'none'\r\n" +
        std::string(foreign) + "\r\n");
    EXPECT_EQ(reading.settings.language, "de") << foreign;
    EXPECT_TRUE(reading.settings.translate) << foreign;
    EXPECT_EQ(reading.settings.model, "m") << foreign;
    EXPECT_EQ(reading.settings.hotkey.name, "f6") << foreign;
    EXPECT_EQ(reading.settings.insert, Insert::type) << foreign;
    EXPECT_THAT(reading.errors, ElementsAre(AllOf(StartsWith(kError), HasSubstr("TOML"))))
        << foreign;
  }
}

TEST(EngineSettings, AFileThatIsNotTomlNamesItsLine) {
  EXPECT_THAT(parseEngineSettings("[model]\nlanguage = 'a'\nlanguage = 'b'").errors,
              ElementsAre(errorInLine(3, "TOML")));
  EXPECT_THAT(parseEngineSettings("[x]\r\n\r\nnote = hello\r\n").errors,
              ElementsAre(errorInLine(3, "TOML")));
  EXPECT_THAT(parseEngineSettings("\xFF\xFE").errors, ElementsAre(errorInLine(1, "TOML")));
  EXPECT_THAT(parseEngineSettings(std::string("\n\0", 2)).errors,
              ElementsAre(errorInLine(2, "TOML")));
}

TEST(EngineSettings, MistakesAreCountedInTheLinesOfAnEditor) {
  EXPECT_THAT(parseEngineSettings("# a\r\n\r\n[model]\r\ntranslate = yes\r\n").errors,
              ElementsAre(errorInLine(4, "translate"), errorInLine(4, "TOML")));
}

TEST(EngineSettings, HaveAnUnreadFirstLineBehindAByteOrderMark) {
  const SettingsReading reading = parseEngineSettings(
      "\xEF\xBB\xBF[model]\r\nlanguage = \"es\"\r\n[output]\r\ninsert = 'none'\r\n");
  EXPECT_THAT(reading.errors, ElementsAre(errorInLine(1, "byte order mark")));
  EXPECT_EQ(reading.settings.language, "auto");
  EXPECT_EQ(reading.settings.insert, Insert::none);
}

TEST(EngineSettings, WhatAFileSaysNeverPassesForALineOfTheEngines) {
  for (const char* text :
       {"[audio]\nhotkey = 'Ready.'", "[model]\nx = { 'Recording...' = 1, y = }",
        "[output]\ninsert = 'encode='", "Ready. = 1", "[model]\nx = 1\n'Ready.' = 1\n'Ready.' = 2",
        "[model]\ny = Ready.", "[model]\ntranslate = 'Ready.'"}) {
    const SettingsReading reading = parseEngineSettings(text);
    ASSERT_EQ(reading.errors.size(), 1U) << text;
    EXPECT_THAT(reading.errors[0],
                testing::Not(testing::AnyOf(HasSubstr("Ready."), HasSubstr("Recording..."),
                                            HasSubstr("encode="))));
  }
}

TEST(EngineSettings, UnknownKeysAndSectionsAreIgnored) {
  EXPECT_THAT(parseEngineSettings("a = 1\n[model]\nb = 2\n[x.y]\nz = []\n[[list]]\n").errors,
              IsEmpty());
}

TEST(EngineSettings, DeepNestingIsAMistakeAndNoCrash) {
  EXPECT_EQ(parseEngineSettings("a = " + std::string(100'000, '[')).errors.size(), 1U);
}

}  // namespace
}  // namespace voxtrel::quillback
