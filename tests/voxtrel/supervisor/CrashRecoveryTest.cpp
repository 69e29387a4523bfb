#include <gtest/gtest.h>

#include <set>

#include "support/EngineFixture.h"
#include "voxtrel/supervisor/CrashRecovery.h"

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
  CrashRecovery() { engine.manager->launch(); }

  /// The newest engine ends with `status`; the test's clock stands still.
  void exitWith(int status) {
    engine.launcher.last().exit(status);
    engine.time.runPosted();
  }
  std::size_t starts() const { return engine.launcher.startedAt.size(); }
  void crashUntilGivenUp() {
    for (int exits = 0; exits < 4; ++exits) {
      exitWith(1);
      engine.time.advance(4s);
    }
  }

  EngineFixture engine;
};

TEST_F(CrashRecovery, CleanExitStopsWithoutNotificationOrRelaunch) {
  exitWith(1);
  engine.time.advance(1s);
  engine.notifications.posted.clear();
  exitWith(0);
  engine.time.advance(10s);
  EXPECT_EQ(engine.manager->state(), AppState::stopped);
  EXPECT_EQ(engine.manager->lastError(), "");
  EXPECT_TRUE(engine.notifications.posted.empty());
  EXPECT_EQ(starts(), 2U);
  engine.manager->launch();  // the clean exit cleared the count
  exitWith(1);
  EXPECT_EQ(engine.notifications.bodies(), Texts{kAttempt1});
}

TEST_F(CrashRecovery, RelaunchesAfterOneTwoAndFourSecondsAndThenGivesUp) {
  const std::vector<std::chrono::milliseconds> delays = {1s, 2s, 4s};
  for (std::size_t crash = 0; crash < delays.size(); ++crash) {
    exitWith(1);
    engine.time.advance(delays[crash] - 1ms);
    EXPECT_EQ(starts(), crash + 1);
    engine.time.advance(1ms);
    EXPECT_EQ(starts(), crash + 2);
    EXPECT_EQ(engine.manager->state(), AppState::loading);
  }
  exitWith(1);
  EXPECT_EQ(engine.manager->state(), AppState::stopped);
  engine.time.advance(60s);
  EXPECT_EQ(starts(), 4U);
  EXPECT_EQ(engine.notifications.bodies(), (Texts{kAttempt1, kAttempt2, kAttempt3, kFinal}));
}

TEST_F(CrashRecovery, KeepsTheStateUntilTheRelaunch) {
  engine.print("Ready.\n");
  exitWith(11);
  EXPECT_EQ(engine.manager->state(), AppState::idle);
  engine.time.advance(1s);
  EXPECT_EQ(engine.manager->state(), AppState::loading);
  EXPECT_EQ(engine.heard, (States{AppState::loading, AppState::idle, AppState::loading}));
}

TEST_F(CrashRecovery, LogsAndShowsTheExitCode) {
  exitWith(139);
  const testing::FakeLog::Entry exited{LogLevel::error, "process", "Process exited with code 139"};
  EXPECT_EQ(engine.log.entries, std::vector{exited});
  EXPECT_EQ(engine.manager->lastError(), "Exited with code 139");
}

TEST_F(CrashRecovery, PrefersWhatTheEngineSaidBeforeItDied) {
  engine.print("[quillback] Failed to load the model\n");
  exitWith(1);
  EXPECT_EQ(engine.manager->lastError(), "[quillback] Failed to load the model");
}

TEST_F(CrashRecovery, EngineThatGetsReadyBetweenCrashesIsNeverGivenUpOn) {
  for (std::size_t crash = 1; crash <= 8; ++crash) {
    engine.print("Ready.\n");
    exitWith(1);
    engine.time.advance(1s);
    EXPECT_EQ(starts(), crash + 1);
  }
  EXPECT_EQ(engine.notifications.bodies(), Texts(8, kAttempt1));
}

TEST_F(CrashRecovery, EncodeLineCountsAsReady) {
  exitWith(1);
  engine.time.advance(1s);
  engine.print("encode=80ms\n");
  exitWith(1);
  EXPECT_EQ(engine.notifications.bodies(), (Texts{kAttempt1, kAttempt1}));
}

TEST_F(CrashRecovery, StoppedEngineIsNoCrash) {
  engine.launcher.last().endsAfterTerminate.reset();  // so that it dies of SIGKILL
  engine.manager->stopAndWait(3s);
  engine.time.advance(10s);
  EXPECT_TRUE(engine.notifications.posted.empty());
  EXPECT_EQ(starts(), 1U);
}

TEST_F(CrashRecovery, PendingRelaunchReplacesTheEngineThatTheUserStartedMeanwhile) {
  exitWith(1);
  engine.time.advance(500ms);
  engine.manager->launch();
  const auto userStarted = engine.launcher.children.back();
  engine.time.advance(500ms);
  EXPECT_EQ(starts(), 3U);
  EXPECT_FALSE(userStarted->running);
  EXPECT_EQ(engine.launcher.running(), 1U);
  EXPECT_EQ(engine.notifications.bodies(), Texts{kAttempt1});
}

TEST_F(CrashRecovery, PendingRelaunchOfASupervisorThatIsGoneStartsNothing) {
  exitWith(1);
  engine.manager.reset();
  engine.time.advance(10s);
  EXPECT_EQ(starts(), 1U);
}

TEST_F(CrashRecovery, NotificationsCarryTitleCategoryAndAnIdentifierOfTheirOwn) {
  crashUntilGivenUp();
  std::set<std::string> identifiers;
  for (const auto& notification : engine.notifications.posted) {
    EXPECT_EQ(notification.title, "Voxtrel");
    EXPECT_EQ(notification.categoryIdentifier, "CRASH_CATEGORY");
    EXPECT_EQ(notification.identifier.size(), 36U);
    EXPECT_EQ(notification.identifier[14], '4');
    identifiers.insert(notification.identifier);
  }
  EXPECT_EQ(identifiers.size(), 4U);
}

struct RestartButton : CrashRecovery {
  RestartButton() { delegate.processManager = engine.manager; }

  void choose(const std::string& action) {
    delegate.didReceive({.actionIdentifier = action, .notificationIdentifier = "any"},
                        [this] { startsAtCompletion.push_back(starts()); });
  }

  CrashNotificationDelegate delegate;
  std::vector<std::size_t> startsAtCompletion;
};

TEST_F(RestartButton, AfterGivingUpStartsTheEngineWithTheFullAllowance) {
  crashUntilGivenUp();
  engine.notifications.posted.clear();
  choose("RESTART_ACTION");
  EXPECT_EQ(starts(), 5U);
  EXPECT_EQ(startsAtCompletion, std::vector<std::size_t>{5});  // completed once, last
  crashUntilGivenUp();
  EXPECT_EQ(engine.notifications.bodies(), (Texts{kAttempt1, kAttempt2, kAttempt3, kFinal}));
}

TEST_F(RestartButton, OtherResponsesOnlyComplete) {
  for (const char* action : {"default", "dismiss", "restart_action", ""}) choose(action);
  EXPECT_EQ(starts(), 1U);
  EXPECT_EQ(startsAtCompletion.size(), 4U);
}

TEST_F(RestartButton, WithoutASupervisorOnlyCompletes) {
  engine.manager.reset();
  choose("RESTART_ACTION");
  EXPECT_EQ(startsAtCompletion, std::vector<std::size_t>{1});
}

TEST_F(RestartButton, NotificationsShowWithBannerAndSoundWhileInFront) {
  PresentationOptions options = PresentationOptions::none;
  delegate.willPresent({}, [&](PresentationOptions chosen) { options = chosen; });
  EXPECT_EQ(static_cast<unsigned>(options), 18U);
}

TEST(RelaunchDelay, ReusesTheLastDelayUpToTheLimit) {
  EXPECT_EQ(relaunchDelay(1), 1000ms);
  EXPECT_EQ(relaunchDelay(2), 2000ms);
  EXPECT_EQ(relaunchDelay(3), 4000ms);
  EXPECT_EQ(relaunchDelay(4), std::nullopt);
}

}  // namespace
}  // namespace voxtrel
