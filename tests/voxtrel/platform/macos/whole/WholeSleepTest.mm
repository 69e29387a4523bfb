#import "support/macos/whole/WholeApplication.h"

namespace voxtrel::testing {
namespace {

class WholeSleepTest : public WholeApplication {
 protected:
  static void announce(NSNotificationName name) {
    NSWorkspace* const workspace = NSWorkspace.sharedWorkspace;
    [workspace.notificationCenter postNotificationName:name object:workspace];
  }
  static void sleep() { announce(NSWorkspaceWillSleepNotification); }
  static void wake() { announce(NSWorkspaceDidWakeNotification); }
};

TEST_F(WholeSleepTest, FindsTheEngineStopped) {
  launchToEngine();
  sleep();
  EXPECT_FALSE(engineRuns()) << "the machine may sleep as soon as the announcement returns";
}

TEST_F(WholeSleepTest, EndsAndTheEngineComesBack) {
  launchToEngine();
  tell("print Ready.");
  ASSERT_TRUE(shows(kReady, @"mic"));
  sleep();
  ASSERT_TRUE(engineEnds());
  wake();
  EXPECT_TRUE(shows(kReady, @"mic")) << "as before it slept, until the engine starts";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(engineStarts());
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1000));
  EXPECT_TRUE(shows("Loading model...", @"mic.badge.xmark"));
}

TEST_F(WholeSleepTest, LeavesAStoppedEngineStopped) {
  launchToEngine();
  tell("exit 0");
  ASSERT_TRUE(shows(kStopped, @"mic.slash"));
  sleep();
  wake();
  runFor(std::chrono::milliseconds(1800));
  EXPECT_FALSE(engineRuns());
}

TEST_F(WholeSleepTest, HidesTheOverlay) {
  launchToEngine();
  record();
  sleep();
  EXPECT_TRUE(overlay() == nil);
}

TEST_F(WholeSleepTest, IsNotWaitedForLongByAnEngineThatIgnoresIt) {
  launchToEngine();
  tell("ignore-term");
  const auto start = std::chrono::steady_clock::now();
  sleep();
  EXPECT_FALSE(engineRuns());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4000));
}

TEST_F(WholeSleepTest, ReachesNothingOnceTheApplicationIsGone) {
  launchToEngine();
  destroy();
  sleep();
  wake();
  runFor(std::chrono::milliseconds(1800));
  EXPECT_FALSE(engineRuns());
}

}  // namespace
}  // namespace voxtrel::testing
