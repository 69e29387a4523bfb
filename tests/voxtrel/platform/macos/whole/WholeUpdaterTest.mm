#import <objc/runtime.h>

#import "support/macos/Sparkle.h"
#import "support/macos/whole/WholeApplication.h"

namespace voxtrel::testing {
namespace {

/// The application as a build with Sparkle: a class with the name of its controller is there.
class WholeUpdaterTest : public WholeApplication {
 protected:
  static void SetUpTestSuite() {
    controllerClass =
        objc_allocateClassPair(TestUpdaterController.class, "SPUStandardUpdaterController", 0);
    objc_registerClassPair(controllerClass);
  }

  NSMenuItem* row() const { return [menu() itemAtIndex:kUpdatesRow]; }
  TestUpdaterController* controller() const { return row().target; }

  static inline Class controllerClass = Nil;
};

TEST_F(WholeUpdaterTest, IsStartedWithTheApplicationAndHasNoDelegates) {
  launchToEngine();
  ASSERT_TRUE([controller() isKindOfClass:controllerClass]);
  EXPECT_TRUE(controller().started);
  EXPECT_FALSE(controller().hasDelegates);
  EXPECT_EQ(controller().checks, 0);
}

TEST_F(WholeUpdaterTest, IsTheTargetOfItsRowAndShowsNoNoticeOfOurs) {
  launchToEngine();
  EXPECT_TRUE(sel_isEqual(row().action, NSSelectorFromString(@"checkForUpdates:")));
  choose(kUpdatesRow);
  EXPECT_EQ(controller().checks, 1);
  EXPECT_TRUE(NSApp.modalWindow == nil);
}

TEST_F(WholeUpdaterTest, GreysItsRowWhileItChecks) {
  launchToEngine();
  controller().isBusy = YES;
  [menu() update];
  EXPECT_FALSE(row().isEnabled);
  controller().isBusy = NO;
  [menu() update];
  EXPECT_TRUE(row().isEnabled);
}

}  // namespace
}  // namespace voxtrel::testing
