// What the engine prints is what the application understands.

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"
#include "quillback/dictation/PrintedLines.h"
#include "quillback/settings/EngineSettings.h"
#include "quillback/text/TextRules.h"
#include "support/DictationFixture.h"
#include "support/EngineWords.h"
#include "support/RandomText.h"
#include "voxtrel/download/SetupOutput.h"
#include "voxtrel/supervisor/LineProtocol.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;

/// One of the engine's lines and its meaning.
struct Meaning {
  std::string line;
  std::optional<AppState> state;
  bool isError = false;
  std::optional<std::string_view> transcription = std::nullopt;
};

void expectMeaning(const Meaning& meaning) {
  const LineEffects effects = interpretLine(meaning.line);
  EXPECT_EQ(effects.state, meaning.state) << meaning.line;
  EXPECT_EQ(effects.isError, meaning.isError) << meaning.line;
  EXPECT_EQ(effects.transcription, meaning.transcription) << meaning.line;
  EXPECT_EQ(parseProgress(meaning.line), std::nullopt) << meaning.line;
}

TEST(EngineOutput, EveryLineHasItsMeaningAndNoOther) {
  const std::vector<Meaning> lines = {
      {std::string(kReadyLine), AppState::idle},
      {std::string(kRecordingLine), AppState::recording},
      {processingLine(0), AppState::processing},
      {processingLine(36'800), AppState::processing},
      {processingLine(4'800'000), AppState::processing},
      {timingLine(400us, 123'456us), AppState::idle},
      {timingLine(0us, 0us), AppState::idle},
      {captureFailedLine("the sound server is gone"), std::nullopt, true},
      {textLine("how are you"), std::nullopt, false, "how are you"},
      {textLine(R"(say "yes" or "no")"), std::nullopt, false, R"(say "yes" or "no")"},
      {textLine("\""), std::nullopt, false, "\""},
      {textLine(""), std::nullopt, false, ""},
      {textLine("gr\xC3\xBC\xC3\x9F dich \xF0\x9F\x98\x80"), std::nullopt, false,
       "gr\xC3\xBC\xC3\x9F dich \xF0\x9F\x98\x80"},
      {textLine("[gpu-decode] text: \"x\""), std::nullopt, false, "[gpu-decode] text: \"x\""},
      {textLine("Ready. Go."), AppState::idle, false, "Ready. Go."},
      {textLine("Accessibility"), std::nullopt, true, "Accessibility"},
  };
  for (const Meaning& meaning : lines) expectMeaning(meaning);
}

TEST(EngineOutput, EveryMistakeInTheSettingsIsAnErrorAndNothingElse) {
  const SettingsReading reading = parseEngineSettings(
      "\xEF\xBB\xBF[x]\n[model]\ntranslate = 1\n[audio]\nhotkey = 'Ready.'\nhotkey_code = 1\n"
      "threads = 'Processing audio'\n"
      "[engine]\nmodel = 'Ready. '\nunload_after = 'encode='\n"
      "[output]\ninsert = 'Recording...'\nreplace = 'Accessibility'\n");
  EXPECT_EQ(reading.errors.size(), 8U);
  for (const std::string& line : reading.errors) expectMeaning({line, std::nullopt, true});
  for (const std::string& line : parseEngineSettings("encode= x").errors) {
    expectMeaning({line, std::nullopt, true});
  }
}

/// What was said, of any bytes.
std::string randomSpeech(RandomText& random, int round) {
  const std::string text = random.ofWords(kEngineWords, 12);
  return round % 2 == 0 ? text : random.damaged(text);
}

TEST(EngineOutput, DictatedWordsComeBackWhateverTheyAre) {
  RandomText random(61);
  int quoted = 0, naming = 0;
  for (int round = 0; round < 20'000; ++round) {
    const std::string said = oneLine(randomSpeech(random, round));
    const std::string line = textLine(said);
    ASSERT_TRUE(isValidUtf8(line)) << ::testing::PrintToString(line);
    int lines = 0;
    forEachLine(line, [&lines](std::string_view) { ++lines; });
    ASSERT_EQ(lines, 1) << ::testing::PrintToString(line);
    const LineEffects effects = interpretLine(line);
    ASSERT_EQ(effects.transcription, said) << ::testing::PrintToString(line);
    ASSERT_EQ(effects.state.has_value(), saysState(said)) << ::testing::PrintToString(line);
    quoted += said.find('"') == std::string::npos ? 0 : 1;
    naming += saysState(said) ? 1 : 0;
  }
  EXPECT_GT(quoted, 4'000);
  EXPECT_GT(naming, 2'000);
}

TEST(EngineOutput, WordsThatAreOneLineOfTextAreNotChanged) {
  for (const char* said :
       {"one", R"("")", "a  b", "\xC2\xA0x", "\xE6\xBC\xA2\xE5\xAD\x97", "'\\n'"}) {
    EXPECT_EQ(interpretLine(textLine(trimmedOneLine(said))).transcription, said);
  }
  EXPECT_EQ(interpretLine(textLine(trimmedOneLine(" one\r\ntwo\xE2\x80\xA8\xFF "))).transcription,
            "one  two \xEF\xBF\xBD");
}

/// A dictation whose lines go to the application's reader.
class Conversation : public DictationFixture {
 protected:
  /// One recording, from the key's press to its words.
  void dictate(const std::string& words) {
    hold(1s);
    readLines();
    EXPECT_EQ(state_, AppState::recording);
    release();
    readLines();
    EXPECT_EQ(state_, AppState::processing);
    understand(words);
    readLines();
  }
  void readLines() {
    std::string chunk;
    for (const std::string& line : output_.take()) chunk += line + '\n';
    interpretChunk(chunk, [this](std::string_view, const LineEffects& effects) {
      if (effects.state) state_ = *effects.state;
      if (effects.transcription) text_ = *effects.transcription;
    });
  }

  AppState state_ = AppState::loading;
  std::string text_;
};

TEST_F(Conversation, TheApplicationFollowsTheEngineWhateverIsSaid) {
  RandomText random(62);
  findKeyAndMicrophone();
  dictation_->modelLoaded(recogniser_);
  readLines();
  EXPECT_EQ(state_, AppState::idle);
  for (int round = 0; round < 300; ++round) {
    const std::string said = randomSpeech(random, round);
    const std::string words = oneLineOfWords(said);
    const std::string expected = words.empty() ? text_ : words;
    dictate(said);
    ASSERT_EQ(state_, AppState::idle) << ::testing::PrintToString(said);
    ASSERT_EQ(text_, expected) << ::testing::PrintToString(said);
  }
}

}  // namespace
}  // namespace voxtrel::quillback
