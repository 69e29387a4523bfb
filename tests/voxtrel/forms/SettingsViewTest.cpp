#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "support/FakeForms.h"
#include "support/ScratchFolder.h"
#include "voxtrel/forms/SettingsView.h"

namespace voxtrel {
namespace {

using testing::FakeLoginItem;
using testing::FakeUserDefaults;
using Flags = std::vector<bool>;

constexpr const char* kConfig = ".config/quillback/config.toml";

/// Records what is written.
struct RecordedDefaults : FakeUserDefaults {
  void setBool(std::string_view key, bool value) override {
    EXPECT_EQ(key, "launchAtLogin");
    written.push_back(value);
    if (!forgets) FakeUserDefaults::setBool(key, value);
  }
  Flags written;
  bool forgets = false;  // as if the file could not be written
};

struct SettingsForm : ::testing::Test {
  SettingsView& open(std::string_view file = "") {
    if (!file.empty()) home.write(kConfig, file);
    view.emplace(config, SettingsPorts{loginItem, defaults}, [this] { saved.push_back(read()); });
    view->setOnChange([this] { heard.push_back(view->launchAtLogin()); });
    return *view;
  }
  ModelSettings read() const { return config.readSettings(); }
  void keep(bool value) { defaults.values["launchAtLogin"] = value; }
  void expectSelected(std::size_t hotkey, std::size_t input, std::size_t output) const {
    EXPECT_EQ(view->selectedHotkeyIndex(), hotkey);
    EXPECT_EQ(view->selectedInputIndex(), input);
    EXPECT_EQ(view->selectedOutputIndex(), output);
  }

  ScratchFolder home{};
  ConfigManager config{home.path().string()};
  FakeLoginItem loginItem;
  RecordedDefaults defaults;
  std::vector<ModelSettings> saved;  // what the file said when the form handed over
  Flags heard;                       // launch at login at each change by itself
  std::optional<SettingsView> view;
};

using Rows = std::vector<std::pair<std::string, std::string>>;

Rows rowsOf(std::span<const Choice<std::string_view>> table) {
  Rows rows;
  for (const auto& row : table) rows.emplace_back(row.display, row.value);
  return rows;
}

TEST_F(SettingsForm, OffersTheHotkeys) {
  EXPECT_EQ(rowsOf(SettingsView::hotkeys()), (Rows{{"Right Command", "right_cmd"},
                                                   {"Right Shift", "right_shift"},
                                                   {"Right Control", "right_ctrl"},
                                                   {"Right Option", "right_opt"},
                                                   {"Shift + \\", "shift+\\"},
                                                   {"F5", "f5"},
                                                   {"F6", "f6"},
                                                   {"F7", "f7"},
                                                   {"F8", "f8"}}));
  for (const auto& [display, name] : SettingsView::hotkeys()) {  // canonical names, all of them
    EXPECT_EQ(ConfigManager::hotkeyCodeToName(ConfigManager::hotkeyNameToCode(name)), name);
  }
}

TEST_F(SettingsForm, OffersTheLanguages) {
  EXPECT_EQ(rowsOf(SettingsView::inputLanguages()), (Rows{{"Auto-detect", "auto"},
                                                          {"English", "en"},
                                                          {"Chinese (Mandarin)", "zh"},
                                                          {"Spanish", "es"},
                                                          {"Hindi", "hi"},
                                                          {"Arabic", "ar"},
                                                          {"French", "fr"},
                                                          {"Portuguese", "pt"},
                                                          {"Russian", "ru"},
                                                          {"Bengali", "bn"},
                                                          {"Japanese", "ja"},
                                                          {"German", "de"},
                                                          {"Korean", "ko"},
                                                          {"Italian", "it"},
                                                          {"Turkish", "tr"},
                                                          {"Vietnamese", "vi"},
                                                          {"Polish", "pl"},
                                                          {"Dutch", "nl"},
                                                          {"Ukrainian", "uk"},
                                                          {"Thai", "th"},
                                                          {"Swedish", "sv"},
                                                          {"Indonesian", "id"},
                                                          {"Cantonese (v3 only)", "yue"}}));
}

TEST_F(SettingsForm, OffersTheOutputs) {
  const auto outputs = SettingsView::outputs();
  ASSERT_EQ(outputs.size(), 2U);
  EXPECT_EQ(outputs[0].display, "Original language");
  EXPECT_FALSE(outputs[0].value);
  EXPECT_EQ(outputs[1].display, "Translate to English");
  EXPECT_TRUE(outputs[1].value);
}

TEST_F(SettingsForm, HasItsTextsAndMeasures) {
  EXPECT_EQ(SettingsView::kModelLabel, "Model:");
  EXPECT_EQ(SettingsView::kModelName, "Whisper Large v3");
  EXPECT_EQ(SettingsView::kHotkeyLabel, "Hotkey:");
  EXPECT_EQ(SettingsView::kInputLanguageLabel, "Input Language:");
  EXPECT_EQ(SettingsView::kOutputLabel, "Output:");
  EXPECT_EQ(SettingsView::kLaunchAtLoginTitle, "Launch at Login");
  EXPECT_EQ(SettingsView::kSaveTitle, "Save & Restart");
  EXPECT_EQ(SettingsView::kWidthPt, 420);
  EXPECT_EQ(SettingsView::kHeightPt, 310);
  EXPECT_EQ(SettingsView::kPaddingPt, 24);
  EXPECT_EQ(SettingsView::kRowSpacingPt, 16);
  EXPECT_EQ(SettingsView::kLabelWidthPt, 130);
  EXPECT_EQ(SettingsView::kControlWidthPt, 200);
}

TEST_F(SettingsForm, OpensWithTheDefaultsWithoutAFile) {
  open();
  expectSelected(0, 0, 0);
  EXPECT_FALSE(view->launchAtLogin());
  EXPECT_FALSE(std::filesystem::exists(home.path() / ".config"));
}

TEST_F(SettingsForm, OpensWithWhatTheFileSays) {
  open("[model]\nlanguage = \"yue\"\ntranslate = true\n[audio]\nhotkey = 'shift+\\'\n");
  expectSelected(4, 22, 1);
}

TEST_F(SettingsForm, ReadsTheFileOnce) {
  open("[model]\nlanguage = \"de\"\n");
  home.write(kConfig, "[model]\nlanguage = \"fr\"\n");
  view->appeared();
  expectSelected(0, 11, 0);
}

TEST_F(SettingsForm, OpensAndSavesEveryRow) {
  const auto languages = SettingsView::inputLanguages();
  const auto hotkeys = SettingsView::hotkeys();
  for (std::size_t row = 0; row < languages.size(); ++row) {
    const std::size_t hotkey = row % hotkeys.size();
    open().selectInput(row);
    view->selectHotkey(hotkey);
    view->selectOutput(row % 2);
    view->saveAndRestart();
    EXPECT_EQ(saved.back(), (ModelSettings{std::string(languages[row].value), row % 2 == 1,
                                           std::string(hotkeys[hotkey].value), "large-v3"}));
    open();
    expectSelected(hotkey, row, row % 2);
  }
  EXPECT_EQ(saved.size(), languages.size());
}

TEST_F(SettingsForm, OpensWithAutoDetectForALanguageThatItDoesNotOffer) {
  for (const char* language : {"de-AT", "DE", "de ", "xx", ""}) {
    open("[model]\nlanguage = \"" + std::string(language) + "\"\n");
    expectSelected(0, 0, 0);
    view->saveAndRestart();
    EXPECT_EQ(saved.back().language, "auto") << language;
  }
}

TEST_F(SettingsForm, OpensWithRightCommandForAHotkeyThatItDoesNotOffer) {
  for (const char* hotkey : {"right_command", "F5", "f9", "", " f5"}) {
    open("[audio]\nhotkey = \"" + std::string(hotkey) + "\"\n");
    expectSelected(0, 0, 0);
    view->saveAndRestart();
    EXPECT_EQ(saved.back().hotkey, "right_cmd") << hotkey;
  }
}

TEST_F(SettingsForm, WritesItsOwnModelOverAnyOther) {
  open("[model]\nwhisper_model = \"medium\"\n# kept\n").saveAndRestart();
  ASSERT_EQ(saved.size(), 1U);
  EXPECT_EQ(saved[0].model, "large-v3");
}

TEST_F(SettingsForm, HandsOverWhateverBecameOfTheFile) {
  home.write(".config", "no folder");
  open().saveAndRestart();
  EXPECT_EQ(saved, std::vector<ModelSettings>{ModelSettings()});
  view.emplace(config, SettingsPorts{loginItem, defaults}, nullptr);
  view->saveAndRestart();  // without a callback
}

TEST_F(SettingsForm, SavesNothingOfLaunchAtLogin) {
  open().saveAndRestart();
  EXPECT_EQ(defaults.written, Flags{});
  EXPECT_EQ(loginItem.asked, Flags{});
}

TEST_F(SettingsForm, EndsTheProcessForARowOutsideItsTable) {
  open();
  EXPECT_DEATH(view->selectHotkey(9), "a row outside its table");
  EXPECT_DEATH(view->selectInput(23), "a row outside its table");
  EXPECT_DEATH(view->selectOutput(2), "a row outside its table");
  EXPECT_DEATH(view->selectInput(static_cast<std::size_t>(-1)), "a row outside its table");
}

// Launch at login

TEST_F(SettingsForm, TakesUpWhatTheSystemSaysWhenItAppears) {
  loginItem.enabled = true;
  open();
  EXPECT_FALSE(view->launchAtLogin());  // the stored value, until then
  view->appeared();
  EXPECT_TRUE(view->launchAtLogin());
  EXPECT_EQ(heard, Flags{true});
  EXPECT_EQ(loginItem.asked, Flags{true});  // a change like any other
  view->appeared();
  loginItem.enabled = false;
  view->appeared();
  EXPECT_FALSE(view->launchAtLogin());
  EXPECT_EQ(heard, (Flags{true, false}));
  EXPECT_EQ(loginItem.asked, (Flags{true, false}));
}

TEST_F(SettingsForm, ChangesNothingWhereTheSystemSaysWhatWasKept) {
  loginItem.enabled = true;
  keep(true);
  open().appeared();
  view->setLaunchAtLogin(true);
  EXPECT_EQ(defaults.written, Flags{});
  EXPECT_EQ(loginItem.asked, Flags{});
  EXPECT_EQ(heard, Flags{});
}

TEST_F(SettingsForm, RegistersAtOnceWhenTheUserAsks) {
  open().setLaunchAtLogin(true);
  EXPECT_TRUE(loginItem.enabled);
  EXPECT_TRUE(view->launchAtLogin());
  view->setLaunchAtLogin(false);
  EXPECT_FALSE(loginItem.enabled);
  EXPECT_FALSE(view->launchAtLogin());
  EXPECT_EQ(loginItem.asked, (Flags{true, false}));
  EXPECT_EQ(defaults.written, (Flags{true, false}));
  EXPECT_EQ(heard, Flags{});  // nothing changed by itself
}

TEST_F(SettingsForm, SpringsBackWhereRegisteringFails) {
  loginItem.canEnable = false;
  open().setLaunchAtLogin(true);
  EXPECT_FALSE(view->launchAtLogin());
  EXPECT_EQ(loginItem.asked, (Flags{true, false}));  // springing back asks for the opposite
  EXPECT_EQ(defaults.written, (Flags{true, false}));
  EXPECT_EQ(heard, Flags{false});
}

TEST_F(SettingsForm, SpringsBackWhereUnregisteringFails) {
  keep(true);
  loginItem.enabled = true;
  loginItem.canDisable = false;
  open().setLaunchAtLogin(false);
  EXPECT_TRUE(view->launchAtLogin());
  EXPECT_EQ(loginItem.asked, (Flags{false, true}));
  EXPECT_EQ(heard, Flags{true});
}

TEST_F(SettingsForm, SpringsBackOnceWhereNothingWorks) {
  loginItem.canEnable = loginItem.canDisable = false;
  open().setLaunchAtLogin(true);
  EXPECT_FALSE(view->launchAtLogin());
  EXPECT_EQ(loginItem.asked, (Flags{true, false}));
  EXPECT_EQ(heard, Flags{false});
}

TEST_F(SettingsForm, SpringsBackWhenItAppearsToo) {
  loginItem.enabled = true;
  loginItem.canEnable = false;
  open().appeared();
  EXPECT_FALSE(view->launchAtLogin());
  EXPECT_EQ(loginItem.asked, (Flags{true, false}));
  EXPECT_EQ(heard, Flags{false});
}

TEST_F(SettingsForm, CanBeSwitchedOffAgainWhereNothingCanBeKept) {
  defaults.forgets = true;
  open().setLaunchAtLogin(true);
  EXPECT_TRUE(view->launchAtLogin());
  view->setLaunchAtLogin(false);
  EXPECT_FALSE(view->launchAtLogin());
  EXPECT_EQ(loginItem.asked, (Flags{true, false}));
  EXPECT_EQ(heard, Flags{});
}

TEST_F(SettingsForm, ShowsWhatTheSystemSaysWhereNothingCanBeKept) {
  defaults.forgets = true;
  loginItem.enabled = true;
  open().appeared();
  EXPECT_TRUE(view->launchAtLogin());
  EXPECT_EQ(heard, Flags{true});
}

TEST_F(SettingsForm, ReleasesItsObserverWhileItIsCalled) {
  loginItem.canEnable = false;
  open().setOnChange([this, alive = std::string(100, 'x')] {
    view->setOnChange(nullptr);
    heard.push_back(alive.size() == 100);
  });
  view->setLaunchAtLogin(true);
  view->setLaunchAtLogin(true);
  EXPECT_EQ(heard, Flags{true});
}

}  // namespace
}  // namespace voxtrel
