#include <string>
#include <vector>

#import "rig_audio.h"
#import "rig_services.h"
#include "support/macos/Observed.h"
#import "support/macos/whole/WholeApplication.h"

namespace voxtrel::testing {
namespace {

using namespace std::chrono_literals;

/// The texts of all labels within a view.
void collectTexts(NSView* view, std::string& texts) {
  for (NSView* part in view.subviews) {
    if ([part isKindOfClass:NSTextField.class]) {
      texts += std::string([static_cast<NSTextField*>(part) stringValue].UTF8String) + "\n";
    }
    collectTexts(part, texts);
  }
}

class WholeAlertsTest : public WholeApplication {
 protected:
  /// Starts the application and presses this button of the alert that comes up.
  void launchAndPress(NSString* button) {
    files.provideWeights();
    const auto user = native->mainLoop.every(20ms, [&] {
      NSWindow* const alert = NSApp.modalWindow;
      if (alert == nil) return;
      if (texts.empty()) collectTexts(alert.contentView, texts);
      [buttonTitled(alert, button) performClick:nil];
      wakeModalLoop();
    });
    launch();
    EXPECT_TRUE(runUntil([&] { return application.terminations > 0; }));
  }
  bool said(const char* text) const { return texts.find(text) != std::string::npos; }

  const OpenedAddresses opened;
  std::string texts;
};

TEST_F(WholeAlertsTest, SayWhyTheMicrophoneIsNeededAndQuit) {
  [RigAudio setPermission:NO];
  launchAndPress(@"Quit");
  EXPECT_TRUE(said("Microphone Permission Required")) << texts;
  EXPECT_TRUE(said("System Settings > Privacy & Security > Microphone, then relaunch")) << texts;
  EXPECT_TRUE(opened.get().empty());
  EXPECT_EQ(application.terminations, 1);
  EXPECT_FALSE(engineRuns());
}

TEST_F(WholeAlertsTest, OpenTheMicrophonesPane) {
  [RigAudio setPermission:NO];
  launchAndPress(@"Open Settings");
  ASSERT_EQ(opened.get().size(), 1U);
  EXPECT_TRUE(opened.get()[0].ends_with("?Privacy_Microphone"));
  EXPECT_EQ(application.terminations, 1);
}

TEST_F(WholeAlertsTest, SayAfterSixtyPollsWhyAccessibilityIsNeededAndQuit) {
  [RigServices setAccessibilityTrusted:NO];
  const int prompts = [RigServices accessibilityPrompts];
  launchAndPress(@"Quit");
  EXPECT_TRUE(said("Accessibility Permission Required")) << texts;
  EXPECT_TRUE(said("System Settings > Privacy & Security > Accessibility, then relaunch")) << texts;
  EXPECT_EQ([RigServices accessibilityPrompts], prompts + 1) << "only the start asks the user";
  EXPECT_FALSE(engineRuns());
}

TEST_F(WholeAlertsTest, OpenAccessibilitysPane) {
  [RigServices setAccessibilityTrusted:NO];
  launchAndPress(@"Open Settings");
  ASSERT_EQ(opened.get().size(), 1U);
  EXPECT_TRUE(opened.get()[0].ends_with("?Privacy_Accessibility"));
}

TEST_F(WholeAlertsTest, DoNotComeWhereTrustIsGivenWhileItWaits) {
  [RigServices setAccessibilityTrusted:NO];
  files.provideWeights();
  launch();
  runFor(200ms);
  EXPECT_FALSE(engineRuns());
  [RigServices setAccessibilityTrusted:YES];
  EXPECT_TRUE(engineStarts());
  EXPECT_TRUE(NSApp.modalWindow == nil);
  EXPECT_EQ(application.terminations, 0);
}

TEST_F(WholeAlertsTest, DoNotComeOnceTheApplicationIsGone) {
  [RigAudio setPermission:NO];
  files.provideWeights();
  launch();
  destroy();
  runFor(100ms);
  EXPECT_TRUE(NSApp.modalWindow == nil);
  EXPECT_EQ(application.terminations, 0);
}

}  // namespace
}  // namespace voxtrel::testing
