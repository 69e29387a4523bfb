#include <filesystem>

#import "support/macos/whole/WholeApplication.h"
#import "voxtrel/platform/macos/foundation/Strings.h"

namespace voxtrel::testing {
namespace {

class WholeSetupTest : public WholeApplication {
 protected:
  static NSString* const kTitle;

  /// Without a model, until the setup runs and does what the test says.
  void launchToSetup() {
    files.scriptSetup("");
    launch();
    ASSERT_TRUE(opens(kTitle));
    ASSERT_TRUE(engineStarts(Mode::setup));
  }
  static NSWindow* setup() { return window(kTitle); }
  static bool says(NSString* text) {
    return runUntil([&] { return labelWith(setup(), text) != nil; });
  }
  static NSButton* skip() { return buttonTitled(setup(), @"Skip (won't work without model)"); }
  static NSButton* retry() { return buttonTitled(setup(), @"Retry"); }
};

NSString* const WholeSetupTest::kTitle = @"Voxtrel Setup";

TEST_F(WholeSetupTest, ComesFirstWhereThereIsNoModel) {
  launchToSetup();
  EXPECT_FALSE(engineRuns());
  EXPECT_TRUE(item() == nil) << "the icon comes with the engine";
  EXPECT_TRUE(setup().isKeyWindow);
}

TEST_F(WholeSetupTest, ShowsTheProgressThenClosesAndStartsTheEngine) {
  launchToSetup();
  tell("progress 812 3094", Mode::setup);
  EXPECT_TRUE(says(@"812.0 MB / 3094.0 MB"));
  NSProgressIndicator* const bar = viewsOf<NSProgressIndicator>(setup()).at(0);
  EXPECT_NEAR(bar.doubleValue, 812.0 / 3094.0, 0.01);
  EXPECT_FALSE(skip().isEnabled);
  tell("exit 0", Mode::setup);
  EXPECT_TRUE(runUntil([&] { return bar.doubleValue == 1; }));
  EXPECT_TRUE(closes(kTitle));
  EXPECT_TRUE(engineStarts());
}

TEST_F(WholeSetupTest, SaysThatItFailedAndTriesAgain) {
  launchToSetup();
  const auto first = files.find(Mode::setup);
  tell("exit 3", Mode::setup);
  EXPECT_TRUE(says(@"Setup failed (exit code 3). Check internet connection."));
  EXPECT_TRUE(says(@"Check your internet connection and try again."));
  EXPECT_TRUE(skip().isEnabled);
  [retry() performClick:nil];
  ASSERT_TRUE(engineStarts(Mode::setup));
  EXPECT_NE(files.find(Mode::setup), first);
  EXPECT_TRUE(retry() == nil);
  tell("exit 0", Mode::setup);
  EXPECT_TRUE(closes(kTitle));
  EXPECT_TRUE(engineStarts());
}

TEST_F(WholeSetupTest, GoesOnWithoutAModelOnSkip) {
  launchToSetup();
  tell("exit 1", Mode::setup);
  ASSERT_TRUE(runUntil([] { return skip().isEnabled; }));
  [skip() performClick:nil];
  EXPECT_TRUE(closes(kTitle));
  EXPECT_TRUE(engineStarts());
}

TEST_F(WholeSetupTest, SaysWhereItLookedForTheEngine) {
  std::filesystem::remove(files.engine());
  launch();
  ASSERT_TRUE(opens(kTitle));
  EXPECT_TRUE(says(toNSString("quillback binary not found at " + files.engine().string())));
}

TEST_F(WholeSetupTest, GoesOnBehindItsClosedWindow) {
  launchToSetup();
  press(setup(), @"\x1b");
  ASSERT_TRUE(closes(kTitle));
  EXPECT_TRUE(engineRuns(Mode::setup));
  tell("exit 0", Mode::setup);
  EXPECT_TRUE(engineStarts());
}

TEST_F(WholeSetupTest, ShowsItsClosedWindowWhenTheApplicationIsOpenedAgain) {
  launchToSetup();
  press(setup(), @"\x1b");
  ASSERT_TRUE(closes(kTitle));
  application.delegate->reopenRequested();
  EXPECT_TRUE(opens(kTitle));
  EXPECT_TRUE(engineRuns(Mode::setup));
}

}  // namespace
}  // namespace voxtrel::testing
