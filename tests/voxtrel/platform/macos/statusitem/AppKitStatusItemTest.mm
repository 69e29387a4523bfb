#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "support/macos/Controls.h"
#import "support/macos/RunLoop.h"
#import "support/macos/Sparkle.h"
#import "support/macos/Symbols.h"
#import "voxtrel/platform/macos/statusitem/AppKitStatusItem.h"

namespace voxtrel {
namespace {

struct AppKitStatusItemTest : ::testing::Test {
  AppKitStatusItemTest() {
    item->setMenu({{.title = "Ready \u2014 hold Right Cmd", .enabled = false},
                   {.separator = true},
                   {.title = "Settings...", .keyEquivalent = ",", .action = [&] { ++chosen; }},
                   {.title = "Check for Updates...",
                    .action = [&] { ++chosen; },
                    .systemAction = "checkForUpdates"},
                   {.title = "A & B_c", .action = [&] { ++chosen; }}});
  }

  NSStatusItem* native() const { return item->nativeItem(); }
  NSMenu* menu() const { return native().menu; }
  NSMenuItem* row(NSInteger index) const { return [menu() itemAtIndex:index]; }
  void choose(NSInteger index) const {
    [menu() update];
    [menu() performActionForItemAtIndex:index];
  }

  static NSEvent* key(NSString* characters, NSEventModifierFlags modifiers) {
    return [NSEvent keyEventWithType:NSEventTypeKeyDown
                            location:NSZeroPoint
                       modifierFlags:modifiers
                           timestamp:0
                        windowNumber:0
                             context:nil
                          characters:characters
         charactersIgnoringModifiers:characters
                           isARepeat:NO
                             keyCode:0];
  }

  int chosen = 0;
  TestUpdaterController* const updater =
      [[TestUpdaterController alloc] initWithStartingUpdater:NO
                                             updaterDelegate:nil
                                          userDriverDelegate:nil];
  std::unique_ptr<AppKitStatusItem> item = std::make_unique<AppKitStatusItem>(
      AppKitStatusItem::SystemActions{{"checkForUpdates", {updater, @selector(checkForUpdates:)}}});
};

TEST_F(AppKitStatusItemTest, rowsStandInTheirOrderAsTheyAreWritten) {
  ASSERT_EQ(menu().numberOfItems, 5);
  EXPECT_TRUE([row(0).title isEqual:@"Ready \u2014 hold Right Cmd"]);
  EXPECT_TRUE(row(1).isSeparatorItem);
  EXPECT_TRUE([row(2).title isEqual:@"Settings..."]);
  EXPECT_TRUE([row(4).title isEqual:@"A & B_c"]);
}

TEST_F(AppKitStatusItemTest, aRowWithoutActionIsDisabled) {
  [menu() update];
  EXPECT_FALSE(row(0).isEnabled);
  EXPECT_TRUE(row(2).isEnabled);
  choose(0);
  EXPECT_EQ(chosen, 0);
}

TEST_F(AppKitStatusItemTest, aChosenRowRunsItsAction) {
  choose(2);
  choose(4);
  EXPECT_EQ(chosen, 2);
}

TEST_F(AppKitStatusItemTest, aKeyEquivalentNeedsTheCommandKey) {
  EXPECT_TRUE([menu() performKeyEquivalent:key(@",", NSEventModifierFlagCommand)]);
  EXPECT_EQ(chosen, 1);
  EXPECT_FALSE([menu() performKeyEquivalent:key(@",", 0)]);
  EXPECT_EQ(chosen, 1);
}

TEST_F(AppKitStatusItemTest, aSystemActionGoesToItsTarget) {
  choose(3);
  EXPECT_EQ(updater.checks, 1);
  EXPECT_EQ(chosen, 0);
  EXPECT_TRUE(row(3).target == updater);
}

TEST_F(AppKitStatusItemTest, theTargetOfASystemActionDecidesWhetherItIsEnabled) {
  updater.isBusy = YES;
  [menu() update];
  EXPECT_FALSE(row(3).isEnabled);
  updater.isBusy = NO;
  [menu() update];
  EXPECT_TRUE(row(3).isEnabled);
}

TEST_F(AppKitStatusItemTest, withoutATargetTheRowsOwnActionRuns) {
  item = std::make_unique<AppKitStatusItem>(AppKitStatusItem::SystemActions{});
  item->setMenu({{.title = "Check for Updates...",
                  .action = [&] { ++chosen; },
                  .systemAction = "checkForUpdates"}});
  choose(0);
  EXPECT_EQ(chosen, 1);
}

TEST_F(AppKitStatusItemTest, aTitleChangesAndTheOthersStay) {
  item->setTitle(0, "Recording...");
  EXPECT_TRUE([row(0).title isEqual:@"Recording..."]);
  EXPECT_TRUE([row(2).title isEqual:@"Settings..."]);
  item->setTitle(9, "nowhere");
  EXPECT_EQ(menu().numberOfItems, 5);
}

TEST_F(AppKitStatusItemTest, theImageIsASymbolOf16PointsThatTheBarMayTint) {
  item->setSymbol("mic.fill");
  NSImage* image = native().button.image;
  EXPECT_TRUE(image.isTemplate);
  if (image.testSymbolName != nil) {
    EXPECT_TRUE([image.testSymbolName isEqual:@"mic.fill"]);
    EXPECT_EQ(image.testSymbolPointSize, 16);
  }
}

TEST_F(AppKitStatusItemTest, everySymbolOfTheApplicationIsKnown) {
  for (const char* name : {"mic.badge.xmark", "mic", "mic.fill", "waveform", "mic.slash"}) {
    NSImage* before = native().button.image;
    item->setSymbol(name);
    EXPECT_TRUE(native().button.image != before) << name;
  }
}

TEST_F(AppKitStatusItemTest, anUnknownSymbolLeavesTheImage) {
  item->setSymbol("mic");
  NSImage* before = native().button.image;
  item->setSymbol("no.such.symbol");
  EXPECT_TRUE(native().button.image == before);
}

TEST_F(AppKitStatusItemTest, whatIsAlreadyShownMakesNoNewImage) {
  item->setSymbol("mic");
  NSImage* before = native().button.image;
  item->setSymbol("mic");
  EXPECT_TRUE(native().button.image == before);
}

TEST_F(AppKitStatusItemTest, theItemIsSquareAndHasNoTitle) {
  EXPECT_EQ(native().length, NSSquareStatusItemLength);
  EXPECT_EQ(native().button.title.length, 0U);
}

TEST_F(AppKitStatusItemTest, anActionMayReplaceTheMenu) {
  item->setMenu({{.title = "Replace", .action = [&] {
                    item->setMenu({{.title = "New", .enabled = false}});
                    ++chosen;
                  }}});
  choose(0);
  EXPECT_EQ(chosen, 1);
  EXPECT_TRUE([row(0).title isEqual:@"New"]);
}

TEST_F(AppKitStatusItemTest, nothingIsCalledOnceTheOwnerIsGone) {
  NSStatusItem* kept = native();
  NSMenu* keptMenu = menu();
  item.reset();
  [keptMenu update];
  [keptMenu performActionForItemAtIndex:2];
  EXPECT_EQ(chosen, 0);
  EXPECT_TRUE(kept.button.superview == nil);
}

TEST_F(AppKitStatusItemTest, aThousandRoundsKeepNothing) {
  const auto held = std::make_shared<int>(0);
  for (int i = 0; i < 1000; ++i) {
    @autoreleasepool {
      item->setMenu({{.title = "Row", .action = [held] { ++*held; }}});
      item->setSymbol(i % 2 == 0 ? "mic" : "mic.fill");
    }
  }
  item.reset();
  runOnce();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(AppKitStatusItemTest, aThousandItemsLeaveTheBar) {
  constexpr std::size_t kRounds = 1000;
  std::vector<testing::WeakObject> natives;
  for (std::size_t round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      item = std::make_unique<AppKitStatusItem>(AppKitStatusItem::SystemActions{});
      item->setMenu({{.title = "Row", .action = [] {}}});
      natives.push_back({native()});
      natives.push_back({menu()});
      item.reset();
    }
  }
  EXPECT_TRUE(runUntil([&] { return testing::countAlive(natives) == 0; }));
  EXPECT_EQ(natives.size(), 2 * kRounds);
}

}  // namespace
}  // namespace voxtrel
