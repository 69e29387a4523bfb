#include <gtest/gtest.h>

#import "support/macos/RunLoop.h"
#import "support/macos/Sparkle.h"
#import "voxtrel/platform/macos/application/SparkleUpdater.h"

namespace voxtrel {
namespace {

/// Everything that a view and those within it say.
NSString* textsIn(NSView* view) {
  NSMutableString* texts = [NSMutableString string];
  for (NSView* part in view.subviews) {
    if ([part respondsToSelector:@selector(stringValue)]) {
      [texts appendFormat:@"%@\n", [static_cast<NSControl*>(part) stringValue]];
    }
    [texts appendString:textsIn(part)];
  }
  return texts;
}

TEST(SparkleUpdaterTest, theControllerIsStartedAtOnceAndHasNoDelegates) {
  const SparkleUpdater updater(TestUpdaterController.class, "0.1.0");
  TestUpdaterController* controller = updater.controller();
  EXPECT_TRUE(controller.started);
  EXPECT_FALSE(controller.hasDelegates);
}

TEST(SparkleUpdaterTest, aCheckIsTheControllers) {
  SparkleUpdater updater(TestUpdaterController.class, "0.1.0");
  updater.checkForUpdates();
  EXPECT_EQ([static_cast<TestUpdaterController*>(updater.controller()) checks], 1);
}

TEST(SparkleUpdaterTest, aBuildWithoutTheFrameworkSaysSo) {
  SparkleUpdater updater(Nil, "0.1.0");
  EXPECT_TRUE(updater.controller() == nil);
  __block NSString* said = @"";
  NSTimer* timer = [NSTimer timerWithTimeInterval:0.05
                                          repeats:YES
                                            block:^(NSTimer*) {
                                              NSWindow* shown = NSApp.modalWindow;
                                              if (shown == nil) return;
                                              said = textsIn(shown.contentView);
                                              [NSApp abortModal];
                                            }];
  [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
  updater.checkForUpdates();
  [timer invalidate];
  EXPECT_TRUE([said containsString:@"Voxtrel 0.1.0"]) << said.UTF8String;
  EXPECT_TRUE([said containsString:@"This build has no update feed."]) << said.UTF8String;
}

TEST(SparkleUpdaterTest, aThousandRoundsKeepNothing) {
  __weak id controller = nil;
  for (int i = 0; i < 1000; ++i) {
    @autoreleasepool {
      const SparkleUpdater updater(TestUpdaterController.class, "0.1.0");
      controller = updater.controller();
      ASSERT_TRUE(controller != nil);
    }
  }
  EXPECT_TRUE(controller == nil);
}

}  // namespace
}  // namespace voxtrel
