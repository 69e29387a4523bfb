#include <filesystem>
#include <thread>

#import "support/macos/Symbols.h"
#import "support/macos/whole/WholeApplication.h"
#import "voxtrel/platform/macos/foundation/Strings.h"

namespace voxtrel::testing {
namespace {

class WholeMenuTest : public WholeApplication {
 protected:
  NSMenuItem* row(NSInteger index) const { return [menu() itemAtIndex:index]; }
};

TEST_F(WholeMenuTest, FollowsTheEngineThroughItsStates) {
  launchToEngine();
  EXPECT_TRUE(shows("Loading model...", @"mic.badge.xmark"));
  tell("print Ready.");
  EXPECT_TRUE(shows(kReady, @"mic"));
  tell("print Recording...");
  EXPECT_TRUE(shows("Recording...", @"mic.fill"));
  tell("print Processing 1.0s of audio");
  EXPECT_TRUE(shows("Transcribing...", @"waveform"));
  tell("print Ready.");
  EXPECT_TRUE(shows(kReady, @"mic"));
  tell("exit 0");
  EXPECT_TRUE(shows(kStopped, @"mic.slash"));
}

TEST_F(WholeMenuTest, ShowsEveryIconAsATemplateOf16Points) {
  launchToEngine();
  ASSERT_TRUE(shows("Loading model...", @"mic.badge.xmark"));
  EXPECT_TRUE(item().button.image.isTemplate);
  tell("print Recording...");
  ASSERT_TRUE(shows("Recording...", @"mic.fill"));
  EXPECT_TRUE(item().button.image.isTemplate);
  EXPECT_EQ(item().button.image.testSymbolPointSize, 16);
}

TEST_F(WholeMenuTest, HasItsRowsAndKeysInOrder) {
  launchToEngine();
  [menu() update];
  ASSERT_EQ(menu().numberOfItems, 7);
  EXPECT_EQ(title(1), "Last: \u2014");
  EXPECT_FALSE(row(0).isEnabled);
  EXPECT_FALSE(row(1).isEnabled);
  EXPECT_TRUE(row(2).isSeparatorItem);
  const char* const titles[] = {"Settings...", "Check for Updates...", "Restart", "Quit Voxtrel"};
  const char* const keys[] = {",", "", "r", "q"};
  for (NSInteger index = 0; index < 4; ++index) {
    EXPECT_EQ(title(3 + index), titles[index]);
    EXPECT_EQ(toString(row(3 + index).keyEquivalent), keys[index]);
    EXPECT_TRUE(row(3 + index).isEnabled) << index;
  }
}

TEST_F(WholeMenuTest, ShowsTheLastWordsInAnyLanguage) {
  launchToEngine();
  tell("print [gpu-decode] text: \"hello\"");
  EXPECT_TRUE(runUntil([&] { return title(1) == "Last: hello"; })) << title(1);
  tell("print [gpu-decode] text: \"Gr\u00fc\u00dfe \u4f60\u597d & _\"");
  EXPECT_TRUE(runUntil([&] { return title(1) == "Last: Gr\u00fc\u00dfe \u4f60\u597d & _"; }))
      << title(1);
}

TEST_F(WholeMenuTest, SaysThatThereIsNoEngine) {
  files.provideWeights();
  std::filesystem::remove(files.engine());
  launch();
  EXPECT_TRUE(shows("Error: quillback binary not found", @"mic.slash"));
}

TEST_F(WholeMenuTest, RestartsTheEngineFromItsRow) {
  launchToEngine();
  const auto first = files.find();
  choose(kRestartRow);
  ASSERT_TRUE(engineStarts());
  EXPECT_NE(files.find(), first);
  EXPECT_TRUE(shows("Loading model...", @"mic.badge.xmark"));
}

TEST_F(WholeMenuTest, StartsAStoppedEngineFromItsRow) {
  launchToEngine();
  tell("exit 0");
  ASSERT_TRUE(shows(kStopped, @"mic.slash"));
  choose(kRestartRow);
  EXPECT_TRUE(engineStarts());
}

TEST_F(WholeMenuTest, SaysWhichVersionItIsWithoutAnUpdater) {
  launchToEngine();
  std::string said;
  const auto reader = native->mainLoop.every(std::chrono::milliseconds(20), [&] {
    NSWindow* const notice = NSApp.modalWindow;
    if (notice == nil) return;
    if (labelWith(notice, @"Voxtrel 0.1.0") != nil) said = "Voxtrel 0.1.0";
    [buttonTitled(notice, @"OK") performClick:nil];
    wakeModalLoop();
  });
  choose(kUpdatesRow);
  EXPECT_EQ(said, "Voxtrel 0.1.0");
}

TEST_F(WholeMenuTest, BearsAFloodOfTheEngine) {
  launchToEngine();
  tell("print Ready.");
  ASSERT_TRUE(shows(kReady, @"mic"));
  // It prints no faster than the main thread takes what it says.
  std::thread user([this] {
    tell("repeat 20000 Processing 1.0s of audio\\nReady.");
    tell("print [gpu-decode] text: \"after the flood\"");
  });
  EXPECT_TRUE(runUntil([&] { return title(1) == "Last: after the flood"; }));
  user.join();
  EXPECT_TRUE(shows(kReady, @"mic"));
}

}  // namespace
}  // namespace voxtrel::testing
