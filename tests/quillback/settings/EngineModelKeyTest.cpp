#include <gtest/gtest.h>

#include "common/settings/SettingsWriter.h"
#include "quillback/settings/EngineModelKey.h"

namespace voxtrel::quillback {
namespace {

std::string chosen(std::string_view text, std::string_view model = "base") {
  return withEngineModel(text, model).value_or("refused");
}

TEST(EngineModelKeyTest, TheChoiceIsRead) {
  EXPECT_EQ(engineModelOf("[engine]\nmodel = \"base\"  # note\n"), "base");
  EXPECT_EQ(engineModelOf("engine.model = 'tiny'\n"), "tiny");
  for (const char* text : {"", "[engine]\n", "[model]\nmodel = \"base\"\n", "[engine]\nmodel = 7\n",
                           "engine = 7\n", "[engine\nmodel = \"base\"\n"}) {
    EXPECT_EQ(engineModelOf(text), "") << text;
  }
}

TEST(EngineModelKeyTest, ANewSectionGoesToTheEnd) {
  EXPECT_EQ(chosen(""), "[engine]\nmodel = \"base\"\n");
  EXPECT_EQ(chosen("[model]\nlanguage = \"de\"\n"),
            "[model]\nlanguage = \"de\"\n\n[engine]\nmodel = \"base\"\n");
  EXPECT_EQ(chosen("[model]\nlanguage = \"de\""),
            "[model]\nlanguage = \"de\"\n\n[engine]\nmodel = \"base\"\n");
  EXPECT_EQ(chosen("[engine.more]\nx = 1\n"),
            "[engine.more]\nx = 1\n\n[engine]\nmodel = \"base\"\n");
}

TEST(EngineModelKeyTest, ASectionThatIsThereTakesTheLine) {
  EXPECT_EQ(chosen("# top\n [engine]  # mine\nunload_after = 60\n[audio]\n"),
            "# top\n [engine]  # mine\nmodel = \"base\"\nunload_after = 60\n[audio]\n");
  EXPECT_EQ(chosen("[engine]"), "[engine]\nmodel = \"base\"\n");
  EXPECT_EQ(chosen("[ engine ]\n"), "[ engine ]\nmodel = \"base\"\n");
}

TEST(EngineModelKeyTest, OnlyTheValueOfAnEarlierChoiceChanges) {
  EXPECT_EQ(chosen("[engine]\n\tmodel\t=  'tiny'\t# f\xC3\xBCr jetzt\nx = 1"),
            "[engine]\n\tmodel\t=  \"base\"\t# f\xC3\xBCr jetzt\nx = 1");
  EXPECT_EQ(chosen("\"\xC3\xBC\" = 1\nengine.model = \"\xC3\xBC\xE2\x82\xAC\" # x\n"),
            "\"\xC3\xBC\" = 1\nengine.model = \"base\" # x\n");
  EXPECT_EQ(chosen("engine = { \"\xC3\xBC\" = 1, model = \"tiny\", x = 2 }\n"),
            "engine = { \"\xC3\xBC\" = 1, model = \"base\", x = 2 }\n");
  EXPECT_EQ(chosen("[engine]\nmodel = \"\"\"\ntiny\"\"\"\nx = 1\n"),
            "[engine]\nmodel = \"base\"\nx = 1\n");
  EXPECT_EQ(chosen("[engine]\nmodel = 7\n"), "[engine]\nmodel = \"base\"\n");
  EXPECT_EQ(chosen("[engine]\nmodel = \"base\"\n"), "[engine]\nmodel = \"base\"\n");
}

TEST(EngineModelKeyTest, LineEndsStayAsTheyAre) {
  EXPECT_EQ(chosen("[engine]\r\nx = 1\r\n"), "[engine]\r\nmodel = \"base\"\r\nx = 1\r\n");
  EXPECT_EQ(chosen("[engine]\r\nmodel = \"tiny\"\r\n"), "[engine]\r\nmodel = \"base\"\r\n");
  EXPECT_EQ(chosen("[audio]\r\n"), "[audio]\r\n\r\n[engine]\r\nmodel = \"base\"\r\n");
}

TEST(EngineModelKeyTest, TextInsideAValueIsNoSection) {
  const std::string text = "[model]\nprompt = \"\"\"\n[engine]\nmodel = 'x'\n\"\"\"\n";
  EXPECT_EQ(chosen(text), text + "\n[engine]\nmodel = \"base\"\n");
}

TEST(EngineModelKeyTest, WhatCannotBeExtendedIsRefused) {
  EXPECT_EQ(withEngineModel("[a]\n[engine\n", "base").error(), "it is not TOML (line 2)");
  for (const char* text :
       {"engine = 7\n", "engine = { x = 1 }\n", "[[engine]]\nx = 1\n", "engine.x = 1\n"}) {
    EXPECT_EQ(withEngineModel(text, "base").error(),
              "its section [engine] is written in a way that cannot be extended")
        << text;
  }
}

TEST(EngineModelKeyTest, TheChoiceOutlivesASaveOfTheSettingsWindow) {
  ModelSettings window;
  const std::string text = withSettings(chosen(withSettings("", window)), window);
  EXPECT_EQ(engineModelOf(text), "base");
  window.language = "fr";
  const std::string saved = withSettings(text, window);
  EXPECT_EQ(engineModelOf(saved), "base");
  EXPECT_EQ(parseSettings(saved), window);
}

}  // namespace
}  // namespace voxtrel::quillback
