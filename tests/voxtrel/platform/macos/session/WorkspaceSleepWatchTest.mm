#include <gtest/gtest.h>

#include <memory>

#include "support/macos/Growth.h"
#import "support/macos/RunLoop.h"
#import "voxtrel/platform/macos/session/WorkspaceSleepWatch.h"

namespace voxtrel {
namespace {

void announce(NSNotificationName name) {
  NSWorkspace* workspace = NSWorkspace.sharedWorkspace;
  [workspace.notificationCenter postNotificationName:name object:workspace];
}

struct WorkspaceSleepWatchTest : ::testing::Test {
  WorkspaceSleepWatch watch;
  int sleeps = 0;
  int wakes = 0;
};

TEST_F(WorkspaceSleepWatchTest, sleepAndWakeReachTheirHandlers) {
  const auto sleep = watch.onWillSleep([&] { ++sleeps; });
  const auto wake = watch.onDidWake([&] { ++wakes; });
  announce(NSWorkspaceWillSleepNotification);
  EXPECT_TRUE(runUntil([&] { return sleeps == 1; }));
  EXPECT_EQ(wakes, 0);
  announce(NSWorkspaceDidWakeNotification);
  EXPECT_TRUE(runUntil([&] { return wakes == 1; }));
  EXPECT_EQ(sleeps, 1);
}

TEST_F(WorkspaceSleepWatchTest, nothingIsCalledWithoutTheHandle) {
  {
    const auto sleep = watch.onWillSleep([&] { ++sleeps; });
  }
  announce(NSWorkspaceWillSleepNotification);
  runOnce();
  EXPECT_EQ(sleeps, 0);
}

TEST_F(WorkspaceSleepWatchTest, aHandlerMayEndItself) {
  Subscription sleep = watch.onWillSleep([&] {
    ++sleeps;
    sleep.reset();
  });
  announce(NSWorkspaceWillSleepNotification);
  announce(NSWorkspaceWillSleepNotification);
  runOnce();
  EXPECT_EQ(sleeps, 1);
}

TEST_F(WorkspaceSleepWatchTest, aThousandRoundsKeepNothing) {
  const auto held = std::make_shared<int>(0);
  for (int i = 0; i < 1000; ++i) {
    @autoreleasepool {
      const auto sleep = watch.onWillSleep([held] { ++*held; });
      const auto wake = watch.onDidWake([held] { ++*held; });
    }
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(WorkspaceSleepWatchTest, aThousandObserversLeaveTheCenter) {
  expectNoGrowth([this] {
    const auto sleep = watch.onWillSleep([] {});
    const auto wake = watch.onDidWake([] {});
  });
}

}  // namespace
}  // namespace voxtrel
