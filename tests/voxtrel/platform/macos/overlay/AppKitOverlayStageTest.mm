#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "support/macos/Controls.h"
#include "support/macos/Observed.h"
#include "support/macos/RunLoop.h"
#include "voxtrel/platform/macos/overlay/AppKitOverlayStage.h"

namespace voxtrel::testing {
namespace {

constexpr Rect kPlace{467, 90, 90, 21};
constexpr Color kRed{1, 0, 0, 1};

class AppKitOverlayStageTest : public ::testing::Test {
 protected:
  static NSWindow* native() { return newestWindow(@"VoxtrelOverlayWindow"); }

  void show() {
    window = stage.makeWindow(kPlace);
    window->setContent(10.5, [this](Canvas& canvas) {
      ++drawn;
      canvas.fillRoundedRect({0, 0, 90, 21}, 0, kRed);
    });
    window->orderFrontRegardless();
  }

  AppKitOverlayStage stage;
  std::unique_ptr<OverlayWindow> window;
  int drawn = 0;
};

TEST_F(AppKitOverlayStageTest, KnowsTheScreens) {
  const NSRect frame = NSScreen.mainScreen.frame;
  const Rect screen{frame.origin.x, frame.origin.y, frame.size.width, frame.size.height};
  EXPECT_GT(screen.width, 0);
  EXPECT_EQ(stage.mainScreenFrame(), screen);
  EXPECT_EQ(stage.screenFrames().front(), screen);
}

TEST_F(AppKitOverlayStageTest, SaysThatThereIsNoScreen) {
  Class const screens = object_getClass(NSScreen.class);
  const ReplacedMethod noMain(screens, @selector(mainScreen), ^NSScreen*(Class) {
    return nil;
  });
  const ReplacedMethod none(screens, @selector(screens), ^NSArray*(Class) {
    return @[];
  });
  EXPECT_EQ(stage.mainScreenFrame(), std::nullopt);
  EXPECT_TRUE(stage.screenFrames().empty());
}

TEST_F(AppKitOverlayStageTest, MakesAHiddenWindowAtTheGivenPlace) {
  window = stage.makeWindow(kPlace);
  ASSERT_TRUE(native());
  EXPECT_FALSE(native().isVisible);
  EXPECT_TRUE(NSEqualRects(native().frame, NSMakeRect(467, 90, 90, 21)));
}

TEST_F(AppKitOverlayStageTest, FloatsTransparentlyOnEverySpace) {
  show();
  EXPECT_TRUE(native().isVisible);
  EXPECT_EQ(native().styleMask, NSWindowStyleMaskBorderless);
  EXPECT_EQ(native().level, NSFloatingWindowLevel);
  EXPECT_FALSE(native().isOpaque);
  EXPECT_TRUE([native().backgroundColor isEqual:NSColor.clearColor]);
  EXPECT_TRUE(native().hasShadow);
  EXPECT_EQ(native().collectionBehavior,
            NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorStationary);
}

TEST_F(AppKitOverlayStageTest, TakesNeitherClicksNorTheKeyboard) {
  show();
  runOnce();
  EXPECT_TRUE(native().ignoresMouseEvents);
  EXPECT_FALSE(native().canBecomeKeyWindow);
  EXPECT_FALSE(native().canBecomeMainWindow);
  EXPECT_FALSE(native().isKeyWindow);
}

TEST_F(AppKitOverlayStageTest, DrawsWhenItNeedsDisplay) {
  show();
  ASSERT_TRUE(runUntil([this] { return drawn > 0; }));
  runOnce();
  const int before = drawn;
  window->setNeedsDisplay();
  EXPECT_TRUE(runUntil([&] { return drawn > before; }));
}

TEST_F(AppKitOverlayStageTest, DrawsNothingWhileItIsHidden) {
  window = stage.makeWindow(kPlace);
  window->setContent(10.5, [this](Canvas&) { ++drawn; });
  window->setNeedsDisplay();
  runOnce();
  EXPECT_EQ(drawn, 0);
}

TEST_F(AppKitOverlayStageTest, CutsOffTheCorners) {
  show();
  NSBitmapImageRep* const picture = pictureOf(native().contentView);
  EXPECT_NEAR([picture colorAtX:45 y:10].redComponent, 1, 0.05);
  EXPECT_NEAR([picture colorAtX:45 y:10].alphaComponent, 1, 0.05);
  EXPECT_LT([picture colorAtX:0 y:0].alphaComponent, 0.2);
  EXPECT_LT([picture colorAtX:89 y:20].alphaComponent, 0.2);
}

TEST_F(AppKitOverlayStageTest, LeavesTheScreenWithItsOwner) {
  WeakObject gone;
  @autoreleasepool {
    show();
    gone.object = native();
    ASSERT_TRUE(runUntil([this] { return drawn > 0; }));
    window.reset();
    EXPECT_FALSE([gone.object isVisible]);
  }
  const int before = drawn;
  EXPECT_TRUE(runUntil([&] { return gone.object == nil; }));
  EXPECT_EQ(drawn, before);
}

TEST_F(AppKitOverlayStageTest, DrawsNothingForAnOwnerThatIsGone) {
  @autoreleasepool {
    show();
    NSView* const view = native().contentView;
    [view display];
    const int before = drawn;
    ASSERT_GT(before, 0);
    window.reset();
    [view display];
    EXPECT_EQ(drawn, before);
  }
}

TEST_F(AppKitOverlayStageTest, LeavesNothingBehindInAThousandRounds) {
  constexpr std::size_t kRounds = 1000;
  std::vector<WeakObject> natives;
  for (std::size_t round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      show();
      natives.push_back({native()});
      natives.push_back({native().contentView});
      window.reset();
    }
  }
  EXPECT_TRUE(runUntil([&] { return countAlive(natives) == 0; })) << countAlive(natives);
  EXPECT_EQ(natives.size(), 2 * kRounds);
}

}  // namespace
}  // namespace voxtrel::testing
