#include <filesystem>

#include "support/SavedSettings.h"
#import "support/macos/whole/WholeApplication.h"
#include "voxtrel/platform/Preferences.h"

namespace voxtrel::testing {
namespace {

class WholeSettingsTest : public WholeApplication {
 protected:
  void open() {
    choose(kSettingsRow);
    ASSERT_TRUE(opens(@"Voxtrel Settings"));
  }
  static NSWindow* settings() { return window(@"Voxtrel Settings"); }
  static void pick(std::size_t picker, std::size_t index) {
    NSPopUpButton* const button = viewsOf<NSPopUpButton>(settings())[picker];
    [button.menu performActionForItemAtIndex:static_cast<NSInteger>(index)];
  }
  static void save() { [buttonTitled(settings(), @"Save & Restart") performClick:nil]; }
};

TEST_F(WholeSettingsTest, OpenOnceFromTheMenuWithTheFocus) {
  launchToEngine();
  open();
  NSWindow* const first = settings();
  EXPECT_TRUE(first.isKeyWindow);
  choose(kSettingsRow);
  EXPECT_TRUE(settings() == first);
  press(first, @"w", NSEventModifierFlagCommand);
  EXPECT_TRUE(closes(@"Voxtrel Settings"));
}

TEST_F(WholeSettingsTest, WriteTheSameBytesAsOnEveryDesktop) {
  launchToEngine();
  for (const SavedChoice& choice : kSavedChoices) {
    std::filesystem::remove(files.home().path() / kSettingsPath);
    if (!choice.before.empty()) files.home().write(kSettingsPath, choice.before);
    open();
    pick(0, choice.hotkey);
    pick(1, choice.inputLanguage);
    pick(2, choice.output);
    save();
    ASSERT_TRUE(closes(@"Voxtrel Settings"));
    EXPECT_EQ(settingsFile(files.home()), choice.after);
  }
}

TEST_F(WholeSettingsTest, ShowWhatWasSavedWhenTheyOpenAgain) {
  launchToEngine();
  open();
  pick(0, 6);
  save();
  ASSERT_TRUE(closes(@"Voxtrel Settings"));
  open();
  EXPECT_EQ(viewsOf<NSPopUpButton>(settings())[0].indexOfSelectedItem, 6);
}

TEST_F(WholeSettingsTest, RestartTheEngineWhenTheyAreSaved) {
  launchToEngine();
  const auto first = files.find();
  open();
  save();
  ASSERT_TRUE(engineStarts());
  EXPECT_NE(files.find(), first);
}

TEST_F(WholeSettingsTest, FetchAModelThatIsMissingBeforeTheRestart) {
  launchToEngine();
  std::filesystem::remove_all(files.home().path() / ".local");
  open();
  save();
  ASSERT_TRUE(opens(@"Voxtrel \u2014 Download Model"));
  EXPECT_FALSE(engineRuns());
  EXPECT_TRUE(closes(@"Voxtrel \u2014 Download Model"));
  EXPECT_TRUE(engineStarts());
}

TEST_F(WholeSettingsTest, SetLaunchAtLoginAtOnceAndRememberIt) {
  launchToEngine();
  open();
  NSButton* const box = buttonTitled(settings(), @"Launch at Login");
  [box performClick:nil];
  EXPECT_TRUE(native->loginItem.isEnabled());
  EXPECT_TRUE(native->userDefaults.boolForKey("launchAtLogin"));
  [box performClick:nil];
  EXPECT_FALSE(native->loginItem.isEnabled());
  EXPECT_FALSE(native->userDefaults.boolForKey("launchAtLogin"));
}

TEST_F(WholeSettingsTest, OpenAtTheStartThatAsksForThem) {
  files.provideWeights();
  launch(StartRequest::settings);
  EXPECT_TRUE(opens(@"Voxtrel Settings"));
}

}  // namespace
}  // namespace voxtrel::testing
