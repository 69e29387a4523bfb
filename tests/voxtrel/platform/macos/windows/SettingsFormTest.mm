#include <filesystem>

#include "common/settings/ConfigManager.h"
#include "support/SavedSettings.h"
#include "support/macos/FormFixture.h"
#include "support/macos/Observed.h"

namespace voxtrel::testing {
namespace {

constexpr std::size_t kRounds = 1000;

class SettingsFormTest : public FormFixture {
 protected:
  SettingsFormTest() {
    forms.onSave = [this] { ++saves; };
  }

  static std::vector<NSPopUpButton*> pickers() { return viewsOf<NSPopUpButton>(native()); }
  static NSButton* checkBox() { return buttonTitled(native(), @"Launch at Login"); }
  static NSButton* saveButton() { return buttonTitled(native(), @"Save & Restart"); }
  static void choose(std::size_t picker, std::size_t index) {
    [pickers()[picker].menu performActionForItemAtIndex:static_cast<NSInteger>(index)];
    runOnce();
  }

  static std::vector<NSView*> everything() {
    std::vector<NSView*> views;
    for (NSTextField* label : viewsOf<NSTextField>(native())) views.push_back(label);
    for (NSPopUpButton* picker : pickers()) views.push_back(picker);
    for (NSButton* button : viewsOf<NSButton>(native())) views.push_back(button);
    return views;
  }

  int saves = 0;
};

TEST_F(SettingsFormTest, HasTheGivenTitleAndSizeAndOnlyACloseBox) {
  openSettings();
  EXPECT_STREQ(native().title.UTF8String, "Voxtrel Settings");
  EXPECT_TRUE(NSEqualSizes(content().frame.size, NSMakeSize(420, 280)));
  EXPECT_EQ(native().styleMask, NSWindowStyleMaskTitled | NSWindowStyleMaskClosable);
  EXPECT_FALSE(native().isReleasedWhenClosed);
  EXPECT_TRUE(native().isKeyWindow);
  keepPicture(content(), "settings");
}

TEST_F(SettingsFormTest, HasTheExactTexts) {
  openSettings();
  std::vector<std::string> texts;
  for (NSTextField* label : viewsOf<NSTextField>(native())) {
    texts.emplace_back(label.stringValue.UTF8String);
    EXPECT_FALSE(label.isEditable);
  }
  EXPECT_EQ(texts, (std::vector<std::string>{"Model:", "Whisper Large v3",
                                             "Hotkey:", "Input Language:", "Output:"}));
  EXPECT_TRUE(checkBox());
  EXPECT_TRUE(saveButton());
}

TEST_F(SettingsFormTest, ListsTheTables) {
  openSettings();
  ASSERT_EQ(pickers().size(), 3U);
  EXPECT_EQ(pickers()[0].numberOfItems, 9);
  EXPECT_STREQ([pickers()[0] itemTitleAtIndex:4].UTF8String, "Shift + \\");
  EXPECT_EQ(pickers()[1].numberOfItems, 23);
  EXPECT_STREQ([pickers()[1] itemTitleAtIndex:22].UTF8String, "Cantonese (v3 only)");
  EXPECT_EQ(pickers()[2].numberOfItems, 2);
  EXPECT_STREQ([pickers()[2] itemTitleAtIndex:1].UTF8String, "Translate to English");
}

TEST_F(SettingsFormTest, PutsLabelsAndControlsInTheirColumns) {
  openSettings();
  NSTextField* const label = labelWith(native(), @"Hotkey:");
  EXPECT_EQ(placeOf(label).size.width, 130);
  EXPECT_EQ(label.alignment, NSTextAlignmentRight);
  EXPECT_EQ(placeOf(pickers()[0]).size.width, 200);
  EXPECT_NEAR(NSMidY(placeOf(pickers()[0])), NSMidY(placeOf(label)), 1);
  EXPECT_EQ(NSMinX(placeOf(pickers()[0])), NSMaxX(placeOf(label)) + 8);
  EXPECT_EQ(NSMinX(placeOf(checkBox())), NSMinX(placeOf(pickers()[0])));
  EXPECT_NEAR(NSMidX(placeOf(saveButton())), 210, 1);
}

TEST_F(SettingsFormTest, StacksTheRowsSixteenPointsApartInTheMiddle) {
  openSettings();
  const auto chosen = pickers();
  EXPECT_EQ(NSMinY(placeOf(chosen[0])) - NSMaxY(placeOf(chosen[1])), 16);
  EXPECT_EQ(NSMinY(placeOf(chosen[1])) - NSMaxY(placeOf(chosen[2])), 16);
  EXPECT_EQ(NSMinY(placeOf(chosen[2])) - NSMaxY(placeOf(checkBox())), 16);
  EXPECT_EQ(NSMinY(placeOf(checkBox())) - NSMaxY(placeOf(saveButton())), 16);
  const CGFloat above = 280 - NSMaxY(placeOf(labelWith(native(), @"Whisper Large v3")));
  EXPECT_NEAR(above, NSMinY(placeOf(saveButton())), 1);
  EXPECT_TRUE(areApart(everything()));
}

TEST_F(SettingsFormTest, NamesEveryPickerByItsLabel) {
  openSettings();
  const char* const names[] = {"Hotkey:", "Input Language:", "Output:"};
  for (std::size_t index = 0; index < 3; ++index) {
    EXPECT_STREQ(pickers()[index].accessibilityLabel.UTF8String, names[index]);
  }
}

TEST_F(SettingsFormTest, ShowsWhatTheFileSays) {
  forms.home.write(kSettingsPath,
                   "[model]\nlanguage = \"yue\"\ntranslate = true\n[audio]\nhotkey = 'f7'\n");
  openSettings();
  EXPECT_EQ(pickers()[0].indexOfSelectedItem, 7);
  EXPECT_EQ(pickers()[1].indexOfSelectedItem, 22);
  EXPECT_EQ(pickers()[2].indexOfSelectedItem, 1);
}

TEST_F(SettingsFormTest, WritesTheSameBytesOnEveryDesktop) {
  for (const SavedChoice& choice : kSavedChoices) {
    std::filesystem::remove(forms.home.path() / kSettingsPath);
    if (!choice.before.empty()) forms.home.write(kSettingsPath, choice.before);
    openSettings();
    choose(0, choice.hotkey);
    choose(1, choice.inputLanguage);
    choose(2, choice.output);
    [saveButton() performClick:nil];
    EXPECT_EQ(settingsFile(forms.home), choice.after);
  }
  EXPECT_EQ(saves, 3);
}

TEST_F(SettingsFormTest, SavesOnReturnWhateverHasTheFocus) {
  openSettings();
  int expected = 0;
  for (NSView* view : std::vector<NSView*>{pickers()[0], checkBox(), saveButton()}) {
    [native() makeFirstResponder:view];
    press(native(), @"\r");
    EXPECT_EQ(saves, ++expected) << view.className.UTF8String;
  }
}

TEST_F(SettingsFormTest, SavesOnAReturnThatTheFocusedControlPassesOn) {
  openSettings();
  for (NSView* view : std::vector<NSView*>{pickers()[0], checkBox()}) {
    [native() makeFirstResponder:view];
    [native() keyDown:keyDown(native(), @"\r")];
  }
  EXPECT_EQ(saves, 2);
  EXPECT_EQ(checkBox().state, NSControlStateValueOff);
}

TEST_F(SettingsFormTest, SavesOnceWhileReturnIsHeld) {
  openSettings();
  press(native(), @"\r");
  press(native(), @"\r", 0, true);
  press(native(), @"\r", 0, true);
  EXPECT_EQ(saves, 1);
}

TEST_F(SettingsFormTest, ClosesOnEscapeWithoutSaving) {
  openSettings();
  [native() makeFirstResponder:checkBox()];
  press(native(), @"\x1b");
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(saves, 0);
}

TEST_F(SettingsFormTest, ClosesOnCommandW) {
  openSettings();
  press(native(), @"q", NSEventModifierFlagCommand);
  EXPECT_TRUE(window->isVisible());
  press(native(), @"w", NSEventModifierFlagCommand);
  EXPECT_FALSE(window->isVisible());
}

TEST_F(SettingsFormTest, ShowsTheSystemsLaunchAtLogin) {
  forms.loginItem.enabled = true;
  openSettings();
  EXPECT_EQ(checkBox().state, NSControlStateValueOn);
}

TEST_F(SettingsFormTest, RegistersAtTheClickAndUnchecksIfThatFails) {
  openSettings();
  [checkBox() performClick:nil];
  EXPECT_TRUE(forms.loginItem.enabled);
  EXPECT_EQ(checkBox().state, NSControlStateValueOn);
  [checkBox() performClick:nil];
  forms.loginItem.canEnable = false;
  [checkBox() performClick:nil];
  EXPECT_EQ(checkBox().state, NSControlStateValueOff);
}

TEST_F(SettingsFormTest, MayBeDestroyedByItsOwnButton) {
  WeakObject native;
  forms.onSave = [this] { window.reset(); };
  @autoreleasepool {
    openSettings();
    native.object = FormFixture::native();
    [saveButton() performClick:nil];
    EXPECT_FALSE(FormFixture::native());
  }
  EXPECT_TRUE(runUntil([&] { return native.object == nil; }));
}

TEST_F(SettingsFormTest, IsTheSameWindowWhenItOpensAgain) {
  openSettings();
  NSWindow* const first = native();
  window->close();
  EXPECT_FALSE(window->isVisible());
  forms.loginItem.enabled = true;
  window->makeKeyAndOrderFront();
  EXPECT_EQ(native(), first);
  EXPECT_EQ(checkBox().state, NSControlStateValueOn) << "it has appeared again";
}

TEST_F(SettingsFormTest, ComesForwardWithoutMovingIfItIsOpen) {
  openSettings();
  [native() setFrameOrigin:NSMakePoint(10, 20)];
  const NSRect place = native().frame;
  forms.loginItem.enabled = true;
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(NSEqualRects(native().frame, place));
  EXPECT_EQ(checkBox().state, NSControlStateValueOff) << "it has not appeared again";
}

TEST_F(SettingsFormTest, IsNotCalledByAFormThatOutlivesIt) {
  const auto form = forms.settings();
  WeakObject native;
  @autoreleasepool {
    open(windows.makeWindow({"Voxtrel Settings", 420, 280}, form));
    native.object = FormFixture::native();
    window.reset();
  }
  ASSERT_TRUE(runUntil([&] { return native.object == nil; }));
  forms.loginItem.canEnable = false;
  form->setLaunchAtLogin(true);
  EXPECT_FALSE(form->launchAtLogin());
}

TEST_F(SettingsFormTest, LeavesNothingBehindInAThousandRounds) {
  // The rig measures all rows of a picker again with each that is added, which takes longer than all else.
  const ReplacedMethod measured(NSClassFromString(@"NSMenuView"), @selector(sizeToFit),
                                ^(id){
                                });
  expectNothingLeft(kRounds, [this] {
    return windows.makeWindow({"Voxtrel Settings", 420, 280}, forms.settings());
  });
}

}  // namespace
}  // namespace voxtrel::testing
