#include <gtest/gtest.h>

#include <set>

#include "support/EngineFixture.h"
#include "voxtrel/supervisor/CrashNotificationDelegate.h"
#include "voxtrel/supervisor/CrashPolicy.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using testing::EngineFixture;
using States = std::vector<AppState>;
using Texts = std::vector<std::string>;

const std::string kAttempt1 = "Process crashed. Restarting (attempt 1/3)...";
const std::string kAttempt2 = "Process crashed. Restarting (attempt 2/3)...";
const std::string kAttempt3 = "Process crashed. Restarting (attempt 3/3)...";
const std::string kFinal = "Process crashed 3 times. Stopped. Use menu bar to restart.";

struct CrashRecovery : ::testing::Test {
  CrashRecovery() { bench.manager->launch(); }

  /// The newest engine ends with `status`; the test's clock stands still.
  void exitWith(int status) {
    bench.launcher.last().exit(status);
    bench.time.runPosted();
  }
  std::size_t starts() const { return bench.launcher.startedAt.size(); }
  void crashUntilGivenUp() {
    for (int exits = 0; exits < 4; ++exits) {
      exitWith(1);
      bench.time.advance(4s);
    }
  }

  EngineFixture bench;
};

TEST_F(CrashRecovery, CleanExitStopsWithoutNotificationOrRelaunch) {
  exitWith(1);
  bench.time.advance(1s);
  bench.notifications.posted.clear();
  exitWith(0);
  bench.time.advance(10s);
  EXPECT_EQ(bench.manager->state(), AppState::stopped);
  EXPECT_EQ(bench.manager->lastError(), "");
  EXPECT_TRUE(bench.notifications.posted.empty());
  EXPECT_EQ(starts(), 2U);
  bench.manager->launch();  // the clean exit cleared the count
  exitWith(1);
  EXPECT_EQ(bench.notifications.bodies(), Texts{kAttempt1});
}

TEST_F(CrashRecovery, RelaunchesAfterOneTwoAndFourSecondsAndThenGivesUp) {
  const std::vector<std::chrono::milliseconds> delays = {1s, 2s, 4s};
  for (std::size_t crash = 0; crash < delays.size(); ++crash) {
    exitWith(1);
    bench.time.advance(delays[crash] - 1ms);
    EXPECT_EQ(starts(), crash + 1);
    bench.time.advance(1ms);
    EXPECT_EQ(starts(), crash + 2);
    EXPECT_EQ(bench.manager->state(), AppState::loading);
  }
  exitWith(1);
  EXPECT_EQ(bench.manager->state(), AppState::stopped);
  bench.time.advance(60s);
  EXPECT_EQ(starts(), 4U);
  EXPECT_EQ(bench.notifications.bodies(), (Texts{kAttempt1, kAttempt2, kAttempt3, kFinal}));
}

TEST_F(CrashRecovery, KeepsTheStateUntilTheRelaunch) {
  bench.print("Ready.\n");
  exitWith(11);
  EXPECT_EQ(bench.manager->state(), AppState::idle);
  bench.time.advance(1s);
  EXPECT_EQ(bench.manager->state(), AppState::loading);
  EXPECT_EQ(bench.heard, (States{AppState::loading, AppState::idle, AppState::loading}));
}

TEST_F(CrashRecovery, LogsAndShowsTheExitCode) {
  exitWith(139);
  const testing::FakeLog::Entry exited{LogLevel::error, "process", "Process exited with code 139"};
  EXPECT_EQ(bench.log.entries, std::vector{exited});
  EXPECT_EQ(bench.manager->lastError(), "Exited with code 139");
}

TEST_F(CrashRecovery, PrefersWhatTheEngineSaidBeforeItDied) {
  bench.print("[quillback] Failed to load the model\n");
  exitWith(1);
  EXPECT_EQ(bench.manager->lastError(), "[quillback] Failed to load the model");
}

TEST_F(CrashRecovery, EngineThatGetsReadyBetweenCrashesIsNeverGivenUpOn) {
  for (std::size_t crash = 1; crash <= 8; ++crash) {
    bench.print("Ready.\n");
    exitWith(1);
    bench.time.advance(1s);
    EXPECT_EQ(starts(), crash + 1);
  }
  EXPECT_EQ(bench.notifications.bodies(), Texts(8, kAttempt1));
}

TEST_F(CrashRecovery, EncodeLineCountsAsReady) {
  exitWith(1);
  bench.time.advance(1s);
  bench.print("encode=80ms\n");
  exitWith(1);
  EXPECT_EQ(bench.notifications.bodies(), (Texts{kAttempt1, kAttempt1}));
}

TEST_F(CrashRecovery, StoppedEngineIsNoCrash) {
  bench.launcher.last().endsAfterTerminate.reset();  // so that it dies of SIGKILL
  bench.manager->stopAndWait(3s);
  bench.time.advance(10s);
  EXPECT_TRUE(bench.notifications.posted.empty());
  EXPECT_EQ(starts(), 1U);
}

TEST_F(CrashRecovery, PendingRelaunchReplacesTheEngineThatTheUserStartedMeanwhile) {
  exitWith(1);
  bench.time.advance(500ms);
  bench.manager->launch();
  const auto userStarted = bench.launcher.children.back();
  bench.time.advance(500ms);
  EXPECT_EQ(starts(), 3U);
  EXPECT_FALSE(userStarted->running);
  EXPECT_EQ(bench.launcher.running(), 1U);
  EXPECT_EQ(bench.notifications.bodies(), Texts{kAttempt1});
}

TEST_F(CrashRecovery, PendingRelaunchOfASupervisorThatIsGoneStartsNothing) {
  exitWith(1);
  bench.manager.reset();
  bench.time.advance(10s);
  EXPECT_EQ(starts(), 1U);
}

TEST_F(CrashRecovery, NotificationsCarryTitleCategoryAndAnIdentifierOfTheirOwn) {
  crashUntilGivenUp();
  std::set<std::string> identifiers;
  for (const auto& notification : bench.notifications.posted) {
    EXPECT_EQ(notification.title, "Voxtrel");
    EXPECT_EQ(notification.categoryIdentifier, "CRASH_CATEGORY");
    EXPECT_EQ(notification.identifier.size(), 36U);
    EXPECT_EQ(notification.identifier[14], '4');
    identifiers.insert(notification.identifier);
  }
  EXPECT_EQ(identifiers.size(), 4U);
}

struct RestartButton : CrashRecovery {
  RestartButton() { delegate.processManager = bench.manager; }

  void choose(const std::string& action) {
    delegate.didReceive({.actionIdentifier = action, .notificationIdentifier = "any"},
                        [this] { startsAtCompletion.push_back(starts()); });
  }

  CrashNotificationDelegate delegate;
  std::vector<std::size_t> startsAtCompletion;
};

TEST_F(RestartButton, AfterGivingUpStartsTheEngineWithTheFullAllowance) {
  crashUntilGivenUp();
  bench.notifications.posted.clear();
  choose("RESTART_ACTION");
  EXPECT_EQ(starts(), 5U);
  EXPECT_EQ(startsAtCompletion, std::vector<std::size_t>{5});  // completed once, last
  crashUntilGivenUp();
  EXPECT_EQ(bench.notifications.bodies(), (Texts{kAttempt1, kAttempt2, kAttempt3, kFinal}));
}

TEST_F(RestartButton, OtherResponsesOnlyComplete) {
  for (const char* action : {"default", "dismiss", "restart_action", ""}) choose(action);
  EXPECT_EQ(starts(), 1U);
  EXPECT_EQ(startsAtCompletion.size(), 4U);
}

TEST_F(RestartButton, WithoutASupervisorOnlyCompletes) {
  bench.manager.reset();
  choose("RESTART_ACTION");
  EXPECT_EQ(startsAtCompletion, std::vector<std::size_t>{1});
}

TEST_F(RestartButton, NotificationsShowWithBannerAndSoundWhileInFront) {
  PresentationOptions options = PresentationOptions::none;
  delegate.willPresent({}, [&](PresentationOptions chosen) { options = chosen; });
  EXPECT_EQ(static_cast<unsigned>(options), 18U);
}

TEST(CrashPolicy, ReusesTheLastDelayUpToTheLimit) {
  EXPECT_EQ(relaunchDelay(1), 1000ms);
  EXPECT_EQ(relaunchDelay(2), 2000ms);
  EXPECT_EQ(relaunchDelay(3), 4000ms);
  EXPECT_EQ(relaunchDelay(4), std::nullopt);
}

}  // namespace
}  // namespace voxtrel
