#include <gtest/gtest.h>

#include "support/EngineFixture.h"
#include "voxtrel/supervisor/EngineLocation.h"
#include "voxtrel/supervisor/ProcessManager.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using testing::EngineFixture;
using testing::FakeBundle;
using testing::FakeChild;
using States = std::vector<AppState>;

TEST(EngineStatus, IsLoadingBeforeAnythingWasLaunched) {
  const EngineFixture bench;
  EXPECT_EQ(bench.manager->state(), AppState::loading);
  EXPECT_EQ(bench.manager->lastText(), "");
  EXPECT_EQ(bench.manager->lastError(), "");
  EXPECT_TRUE(bench.launcher.children.empty());
}

TEST(EngineStatus, NotifiesTheObserverAlsoOfAStateThatIsAlreadyCurrent) {
  EngineFixture bench;
  bench.manager->launch();
  bench.print("Ready.\nReady.\n");
  EXPECT_EQ(bench.heard, (States{AppState::loading, AppState::idle, AppState::idle}));
}

TEST(EngineStatus, IsStoredAtOnceAndHeardOfOnTheMainLoopWithItsOwnValue) {
  EngineFixture bench;
  bench.manager->launch();
  bench.time.runPosted();
  bench.heard.clear();
  bench.launcher.last().print("Ready.\nRecording...\n");
  EXPECT_EQ(bench.manager->state(), AppState::recording);
  EXPECT_TRUE(bench.heard.empty());
  bench.time.runPosted();
  EXPECT_EQ(bench.heard, (States{AppState::idle, AppState::recording}));
}

TEST(EngineStatus, IsStoredWithoutAnObserver) {
  EngineFixture bench;
  bench.manager->setOnStateChange(nullptr);
  bench.manager->launch();
  bench.print("Ready.\n");
  EXPECT_EQ(bench.manager->state(), AppState::idle);
}

TEST(EngineStatus, DropsANotificationWhoseSupervisorIsGone) {
  EngineFixture bench;
  bench.manager->launch();
  bench.manager.reset();
  bench.time.runPosted();
  EXPECT_TRUE(bench.heard.empty());
}

TEST(EngineLocation, IsBesideTheApplicationElseInTheSystemFolder) {
  FakeBundle bundle;
  bundle.engine = "/opt/voxtrel/quillback";
  EXPECT_EQ(binaryPath(bundle), "/opt/voxtrel/quillback");
  EXPECT_EQ(bundle.askedFor, std::vector<std::string>{"quillback"});
  bundle.engine.reset();
  EXPECT_EQ(binaryPath(bundle), "/usr/local/bin/quillback");
}

TEST(Launch, StartsTheEngineWithTheSingleArgumentRun) {
  EngineFixture bench;
  bench.manager->launch();
  ASSERT_EQ(bench.launcher.children.size(), 1U);
  const ChildOptions& options = bench.launcher.last().options;
  EXPECT_EQ(options.executable, *bench.bundle.engine);
  EXPECT_EQ(options.arguments, std::vector<std::string>{"run"});
  EXPECT_EQ(options.workingDirectory, "");
  EXPECT_EQ(bench.manager->state(), AppState::loading);
}

TEST(Launch, WithoutAnEngineLogsAndStopsEachTimeAndCountsNoCrash) {
  EngineFixture bench;
  bench.bundle.engine = "/nonexistent/quillback";
  for (std::size_t launches = 1; launches <= 5; ++launches) {
    bench.manager->launch();
    EXPECT_EQ(bench.manager->state(), AppState::stopped);
    EXPECT_EQ(bench.manager->lastError(), "quillback binary not found");
    EXPECT_EQ(bench.log.entries.size(), launches);
  }
  const testing::FakeLog::Entry notFound{LogLevel::error, "process",
                                         "quillback binary not found at /nonexistent/quillback"};
  EXPECT_EQ(bench.log.entries.front(), notFound);
  bench.time.advance(10s);
  EXPECT_TRUE(bench.launcher.startedAt.empty());
  EXPECT_TRUE(bench.notifications.posted.empty());
}

TEST(Launch, ThatFailsShowsWhyAndIsNotRepeated) {
  EngineFixture bench;
  bench.launcher.failure = "Cannot start quillback: Permission denied";
  bench.manager->launch();
  bench.time.advance(10s);
  EXPECT_EQ(bench.manager->state(), AppState::stopped);
  EXPECT_EQ(bench.manager->lastError(), "Cannot start quillback: Permission denied");
  EXPECT_EQ(bench.launcher.startedAt.size(), 1U);
  EXPECT_TRUE(bench.notifications.posted.empty());
  EXPECT_EQ(bench.heard, (States{AppState::loading, AppState::stopped}));
}

TEST(Launch, ForgetsTheLastErrorAndKeepsTheLastText) {
  EngineFixture bench;
  bench.manager->launch();
  bench.print("[quillback] ERROR one\n[gpu-decode] text: \"hello\"\n");
  bench.manager->launch();
  EXPECT_EQ(bench.manager->lastError(), "");
  EXPECT_EQ(bench.manager->lastText(), "hello");
}

TEST(Launch, ReplacesTheRunningEngine) {
  EngineFixture bench;
  bench.manager->launch();
  bench.manager->launch();
  ASSERT_EQ(bench.launcher.children.size(), 2U);
  EXPECT_EQ(bench.launcher.children[0]->terminations, 1);
  EXPECT_FALSE(bench.launcher.children[0]->running);
  EXPECT_TRUE(bench.launcher.last().running);
}

TEST(Launch, IgnoresWhatTheReplacedEnginePrintsAndHowItEnds) {
  EngineFixture bench;
  bench.launcher.endsAfterTerminate = 200ms;
  bench.manager->launch();
  const auto old = bench.launcher.children.back();
  bench.manager->launch();
  bench.print("Ready.\n");
  bench.heard.clear();
  old->print("Recording...\n[quillback] ERROR late\n[gpu-decode] text: \"late\"\n");
  old->options.onExit(1);
  bench.time.advance(10s);
  EXPECT_EQ(bench.manager->state(), AppState::idle);
  EXPECT_EQ(bench.manager->lastError(), "");
  EXPECT_EQ(bench.manager->lastText(), "");
  EXPECT_TRUE(bench.heard.empty());
  EXPECT_TRUE(bench.notifications.posted.empty());
}

TEST(Launch, LeavesOneEngineWhenAnotherLaunchOvertakesIt) {
  EngineFixture bench;
  bool overtaken = false;
  bench.launcher.onStarted = [&](FakeChild& /*child*/) {
    if (!std::exchange(overtaken, true)) bench.manager->launch();
  };
  bench.manager->launch();
  ASSERT_EQ(bench.launcher.children.size(), 2U);
  EXPECT_EQ(bench.launcher.running(), 1U);
  EXPECT_TRUE(bench.launcher.last().running);
  bench.print("Ready.\n");
  EXPECT_EQ(bench.manager->state(), AppState::idle);
  bench.manager->stopAndWait(2s);
  EXPECT_EQ(bench.launcher.running(), 0U);
}

TEST(Launch, StopsTheEngineThatAnotherLaunchStartedBetweenItsOwnStopAndStart) {
  EngineFixture bench;
  bench.launcher.endsAfterTerminate = 200ms;
  bool overtaken = false;
  bench.bundle.onAsked = [&] {
    if (!std::exchange(overtaken, true)) bench.manager->launch();
  };
  std::size_t runningAtStart = 0;
  bench.launcher.onStarted = [&](FakeChild& /*child*/) {
    runningAtStart = bench.launcher.running();
  };
  bench.manager->launch();
  ASSERT_EQ(bench.launcher.children.size(), 2U);
  EXPECT_EQ(runningAtStart, 1U);  // the first has ended before the second begins
  EXPECT_EQ(bench.launcher.children[0]->terminations, 1);
  EXPECT_EQ(bench.launcher.children[0]->kills, 0);
  EXPECT_TRUE(bench.launcher.last().running);
  bench.time.advance(10s);
  EXPECT_TRUE(bench.notifications.posted.empty());
}

TEST(Launch, LeavesNoEngineWhenAStopOvertakesIt) {
  EngineFixture bench;
  bench.launcher.onStarted = [&](FakeChild& /*child*/) { bench.manager->stopAndWait(2s); };
  bench.manager->launch();
  EXPECT_EQ(bench.launcher.running(), 0U);
}

TEST(Launch, ThatWasOvertakenAndFailsLeavesTheLaterOneItsState) {
  EngineFixture bench;
  bench.launcher.failure = "Cannot start quillback: Exec format error";
  bench.launcher.onFailing = [&] {
    bench.launcher.failure.reset();
    bench.manager->launch();
  };
  bench.manager->launch();
  EXPECT_EQ(bench.manager->state(), AppState::loading);
  EXPECT_EQ(bench.manager->lastError(), "");
  EXPECT_EQ(bench.launcher.running(), 1U);
}

TEST(StopAndWait, EndsThePollingAsSoonAsTheEngineHasEndedAndSendsNoKill) {
  EngineFixture bench;
  bench.launcher.endsAfterTerminate = 120ms;
  bench.manager->launch();
  const auto before = bench.time.now();
  bench.manager->stopAndWait(3s);
  EXPECT_EQ(bench.time.now() - before, 150ms);  // the first step of 50 ms after the exit
  EXPECT_EQ(bench.launcher.last().terminations, 1);
  EXPECT_EQ(bench.launcher.last().kills, 0);
}

TEST(StopAndWait, KillsAnEngineThatIgnoresTheRequestAfterTheTimeoutAndWaitsForItsEnd) {
  EngineFixture bench;
  bench.launcher.endsAfterTerminate.reset();
  bench.manager->launch();
  const auto before = bench.time.now();
  bench.manager->stopAndWait(2s);
  EXPECT_EQ(bench.time.now() - before, 2s);
  EXPECT_EQ(bench.launcher.last().kills, 1);
  EXPECT_EQ(bench.launcher.last().waits, 1);
}

TEST(StopAndWait, InALaunchTakesThreeSecondsBeforeTheKill) {
  EngineFixture bench;
  bench.launcher.endsAfterTerminate.reset();
  bench.manager->launch();
  bench.manager->launch();
  EXPECT_EQ(bench.launcher.startedAt[1] - bench.launcher.startedAt[0], 3s);
}

TEST(StopAndWait, KeepsTheStateAndAnnouncesNothing) {
  EngineFixture bench;
  bench.manager->launch();
  bench.print("Recording...\n");
  bench.heard.clear();
  bench.manager->stopAndWait(3s);
  bench.time.advance(10s);
  EXPECT_EQ(bench.manager->state(), AppState::recording);
  EXPECT_TRUE(bench.heard.empty());
  EXPECT_TRUE(bench.notifications.posted.empty());
  EXPECT_EQ(bench.launcher.startedAt.size(), 1U);
}

TEST(StopAndWait, WithoutAnEngineReturnsAtOnce) {
  EngineFixture bench;
  const auto before = bench.time.now();
  bench.manager->stopAndWait(3s);
  bench.manager->launch();
  bench.launcher.last().exit(0);
  bench.manager->stopAndWait(3s);
  EXPECT_EQ(bench.time.now(), before);
  EXPECT_EQ(bench.launcher.last().terminations, 0);
}

TEST(StopAndWait, DoesNotForgetAnEngineThatAnotherThreadStartedMeanwhile) {
  EngineFixture bench;
  bench.launcher.endsAfterTerminate = 200ms;
  bench.manager->launch();
  bench.time.happensAfter(100ms, [&] { bench.manager->launch(); });
  bench.manager->stopAndWait(3s);
  ASSERT_EQ(bench.launcher.children.size(), 2U);
  EXPECT_TRUE(bench.launcher.last().running);
  bench.manager->stopAndWait(3s);
  EXPECT_EQ(bench.launcher.running(), 0U);
}

TEST(Supervisor, ThatIsGoneHearsNothing) {
  EngineFixture bench;
  bench.manager->launch();
  const auto child = bench.launcher.children.back();
  bench.manager.reset();
  child->print("Ready.\n");
  child->exit(1);
  bench.time.advance(10s);
  EXPECT_EQ(bench.launcher.startedAt.size(), 1U);
  EXPECT_TRUE(bench.notifications.posted.empty());
}

}  // namespace
}  // namespace voxtrel
