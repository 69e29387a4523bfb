// What the settings window saves and shows is what the engine does.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <string>

#include "common/settings/ConfigManager.h"
#include "common/settings/SettingsWriter.h"
#include "quillback/settings/EngineSettings.h"
#include "support/ConfigWords.h"
#include "support/FakeForms.h"
#include "support/RandomText.h"
#include "support/ScratchFolder.h"
#include "voxtrel/forms/SettingsView.h"

namespace voxtrel {
namespace {

using quillback::EngineSettings;
using quillback::parseEngineSettings;
using ::testing::Each;
using ::testing::HasSubstr;

/// The engine's settings in the application's terms.
ModelSettings obeyed(const EngineSettings& engine) {
  return {engine.language, engine.translate, std::string(engine.hotkey.name), engine.model};
}

/// A choice of the settings window.
ModelSettings randomChoice(RandomText& random) {
  const auto one = [&random](const auto& rows) { return rows[random.below(rows.size())].value; };
  return {std::string(one(SettingsView::inputLanguages())), one(SettingsView::outputs()),
          std::string(one(SettingsView::hotkeys())), random.below(2) == 0 ? "large-v3" : "medium"};
}

/// Makes settings files.
/// Thread: one.  Borrows: the generator.
class RandomFile {
 public:
  explicit RandomFile(RandomText& random) : random_(random) {}

  /// Sections with old values and notes. Half of the files are not TOML: sections are there twice, lines
  /// end in "\r\n", or other programs keep their own kind of values there. Each key is there once at
  /// most, unless lines end in "\r\n", and no other line reads like one.
  std::string text() {
    isToml_ = random_.below(2) == 0;
    const bool isDos = !isToml_ && random_.below(2) == 0;
    std::string whole = notes();
    whole += section("[model]", kModelKeys);
    whole += section("[audio]", kAudioKeys);
    whole += section("[output]", kOutputKeys);
    whole += section("[server]", kModelKeys);
    if (!isToml_) {
      whole += section("[model]", isDos ? kModelKeys : kNoKeys);
      whole += section("[audio]", isDos ? kAudioKeys : kNoKeys);
    }
    if (!whole.empty() && random_.below(3) == 0) whole.pop_back();
    return isDos ? withCarriageReturns(whole) : whole;
  }

 private:
  using Keys = std::array<std::string_view, 3>;
  static constexpr Keys kModelKeys = {"\tlanguage\t=\t\"de\"  # note\n", "  translate=true\n",
                                      "whisper_model = \"medium\"\n"};
  static constexpr Keys kAudioKeys = {"  hotkey=\"f8\"\n", "hotkey_code = 100\n", "rate = 16000\n"};
  static constexpr Keys kOutputKeys = {"insert = 'none'\n", "", ""};
  static constexpr Keys kNoKeys = {"", "", ""};

  std::string section(std::string_view header, const Keys& keys) {
    if (random_.below(3) == 0) return {};
    constexpr std::array kIndents = {""sv, "  "sv, "\t"sv, "\xC2\xA0"sv};
    const std::size_t indents = kIndents.size() - (isToml_ ? 1 : 0);
    std::string text = std::string(kIndents[random_.below(indents)]).append(header);
    text += random_.below(2) == 0 ? "\n" : " \n";
    text += notes();
    for (const std::string_view key : keys) {
      if (random_.below(2) == 0) text += std::string(key) + notes();
    }
    return text;
  }
  std::string notes() {
    constexpr std::array kNotes = {"# a note\n"sv, "\n"sv, "  \t\n"sv, "# [audio] = soon\n"sv};
    constexpr std::array kForeign = {"threads = 4\n"sv, "note = hi\n"sv, "path = C:\\x\n"sv,
                                     "\xE6\xBC\xA2\n"sv, "x\n"sv};
    std::string text = random_.ofWords(kNotes, 2);
    if (!isToml_ && random_.below(4) == 0) text += random_.ofWords(kForeign, 2);
    return text;
  }
  static std::string withCarriageReturns(const std::string& text) {
    std::string whole;
    for (const char byte : text) whole += byte == '\n' ? std::string("\r\n") : std::string(1, byte);
    return whole;
  }

  RandomText& random_;
  bool isToml_ = true;
};

TEST(SettingsContract, TheEngineObeysWhatTheWindowSavesWhateverElseIsInTheFile) {
  RandomText random(64);
  int notToml = 0, dos = 0, printing = 0;
  for (int round = 0; round < 5'000; ++round) {
    const std::string before = RandomFile(random).text();
    const ModelSettings choice = randomChoice(random);
    const std::string text = withSettings(before, choice);
    const auto reading = parseEngineSettings(text);
    ASSERT_EQ(obeyed(reading.settings), choice) << before << "\n=>\n" << text;
    ASSERT_EQ(parseSettings(text), choice) << before << "\n=>\n" << text;
    ASSERT_LE(reading.errors.size(), 1U) << text;
    ASSERT_THAT(reading.errors, Each(HasSubstr("this is not TOML"))) << text;
    notToml += reading.errors.empty() ? 0 : 1;
    dos += before.find('\r') == std::string::npos ? 0 : 1;
    printing += reading.settings.insert == EngineSettings::Insert::none ? 1 : 0;
  }
  EXPECT_GT(notToml, 1'500);
  EXPECT_LT(notToml, 3'500);
  EXPECT_GT(dos, 1'000);
  EXPECT_GT(printing, 500);
}

TEST(SettingsContract, TheEngineReadsEveryFileAsTheApplicationDoes) {
  RandomText random(65);
  int telling = 0;
  for (int round = 0; round < 5'000; ++round) {
    const std::string text = random.damaged(random.ofWords(kConfigWords, 60));
    const ModelSettings shown = parseSettings(text);
    const EngineSettings engine = parseEngineSettings(text).settings;
    ASSERT_EQ(engine.language, shown.language) << ::testing::PrintToString(text);
    ASSERT_EQ(engine.translate, shown.translate) << ::testing::PrintToString(text);
    ASSERT_EQ(engine.model, shown.model) << ::testing::PrintToString(text);
    ASSERT_EQ(engine.hotkey.code, ConfigManager::hotkeyNameToCode(shown.hotkey))
        << ::testing::PrintToString(text);
    telling += shown == ModelSettings() ? 0 : 1;
  }
  EXPECT_GT(telling, 1'000);
}

/// `text` without the lines that the window writes.
std::string foreignLines(std::string_view text) {
  constexpr std::array kOwn = {"whisper_model"sv, "language"sv, "translate"sv, "hotkey"sv};
  std::string foreign;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view line = text.substr(0, length);
    if (std::ranges::none_of(kOwn, [line](auto key) { return line.starts_with(key); }))
      foreign += line;
    text.remove_prefix(length);
  }
  return foreign;
}

TEST(SettingsContract, ASaveKeepsTheEnginesOwnKeysByteForByte) {
  const std::string own =
      "# mine\n[model]\nprompt = \"\"\"one\n  two [x] = 3\n\"\"\"\nwords = [ # names\n  "
      "\"Joanis\",\n\n"
      "\t'C = N', \"a]\",   \n  'last'\n]\nthreads=4\n\n[engine]\n  model = \"base\" # fast\n"
      "unload_after = 600\n\n[output]\nreplace = { \"new line\" = \"\\n\", \"full stop\" = \".\" "
      "}\n"
      "\n[audio]\n";
  const EngineSettings before = parseEngineSettings(own).settings;
  EXPECT_EQ(before.words.size(), 4U);
  RandomText random(67);
  std::string text = own;
  for (int round = 0; round < 200; ++round) {
    const ModelSettings choice = randomChoice(random);
    text = withSettings(text, choice);
    ASSERT_EQ(foreignLines(text), own) << text;
    ASSERT_EQ(parseSettings(text), choice) << text;
    const auto reading = parseEngineSettings(text);
    ASSERT_THAT(reading.errors, ::testing::IsEmpty()) << text;
    ASSERT_EQ(reading.settings.engineModel, "base");
    ASSERT_EQ(reading.settings.unloadAfter, std::chrono::seconds(600));
    ASSERT_EQ(reading.settings.prompt, before.prompt);
    ASSERT_EQ(reading.settings.words, before.words);
    ASSERT_EQ(reading.settings.threads, 4);
    ASSERT_EQ(reading.settings.replace, before.replace);
  }
}

/// A home with a settings file, and both programs' view of it.
struct SettingsOfOneHome : ::testing::Test {
  SettingsView window() { return {config, SettingsPorts{loginItem, userDefaults}, nullptr}; }
  EngineSettings engine() const {
    return quillback::readEngineSettings(config.configPath()).settings;
  }
  void expectWindowShowsWhatTheEngineDoes(const std::string& text) {
    home.write(".config/quillback/config.toml", text);
    const SettingsView form = window();
    const EngineSettings settings = engine();
    ASSERT_EQ(SettingsView::hotkeys()[form.selectedHotkeyIndex()].value, settings.hotkey.name)
        << ::testing::PrintToString(text);
    ASSERT_EQ(SettingsView::outputs()[form.selectedOutputIndex()].value, settings.translate)
        << ::testing::PrintToString(text);
  }

  ScratchFolder home{};
  ConfigManager config{home.path().string()};
  testing::FakeLoginItem loginItem;
  testing::FakeUserDefaults userDefaults;
};

TEST_F(SettingsOfOneHome, TheWindowShowsWhatTheEngineDoes) {
  for (const char* text :
       {"", "[audio]\r\nhotkey = 'f6'\r\n", "[audio]\nhotkey = 'f6'\nnote = hello\n",
        "[audio]\nhotkey = 'f6'\nhotkey_code = 96\n", "[audio]\nhotkey_code = 96\n",
        "[audio]\nhotkey = 'caps'\nhotkey_code = 96\n", "[model]\ntranslate = True\n",
        "\xEF\xBB\xBF[audio]\nhotkey = 'f6'\n", "[audio]\nhotkey = 'f6'\n# caf\xE9\n"}) {
    expectWindowShowsWhatTheEngineDoes(text);
  }
  home.write(".config/quillback/config.toml", std::string("[audio]\n\0\nhotkey = 'f6'\n", 24));
  EXPECT_EQ(engine().hotkey.name, "f6");
  RandomText random(66);
  for (int round = 0; round < 1'000; ++round) {
    expectWindowShowsWhatTheEngineDoes(random.damaged(random.ofWords(kConfigWords, 40)));
  }
}

TEST_F(SettingsOfOneHome, EveryRowOfTheWindowReachesTheEngine) {
  const auto languages = SettingsView::inputLanguages();
  for (const char* before : {"", "[audio]\r\nhotkey = 'f7'\r\n", "note = hello\n", "caf\xE9\n"}) {
    home.write(".config/quillback/config.toml", before);
    for (std::size_t row = 0; row < languages.size(); ++row) {
      SettingsView form = window();
      const std::size_t hotkey = row % SettingsView::hotkeys().size();
      form.selectInput(row);
      form.selectHotkey(hotkey);
      form.selectOutput(row % 2);
      form.saveAndRestart();
      EXPECT_EQ(obeyed(engine()),
                (ModelSettings{std::string(languages[row].value), row % 2 == 1,
                               std::string(SettingsView::hotkeys()[hotkey].value), "large-v3"}));
    }
  }
}

}  // namespace
}  // namespace voxtrel
