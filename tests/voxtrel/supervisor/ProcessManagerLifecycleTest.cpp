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
  const EngineFixture engine;
  EXPECT_EQ(engine.manager->state(), AppState::loading);
  EXPECT_EQ(engine.manager->lastText(), "");
  EXPECT_EQ(engine.manager->lastError(), "");
  EXPECT_TRUE(engine.launcher.children.empty());
}

TEST(EngineStatus, NotifiesTheObserverAlsoOfAStateThatIsAlreadyCurrent) {
  EngineFixture engine;
  engine.manager->launch();
  engine.print("Ready.\nReady.\n");
  EXPECT_EQ(engine.heard, (States{AppState::loading, AppState::idle, AppState::idle}));
}

TEST(EngineStatus, IsStoredAtOnceAndReportedOnTheMainLoopWithItsOwnValue) {
  EngineFixture engine;
  engine.manager->launch();
  engine.time.runPosted();
  engine.heard.clear();
  engine.launcher.last().print("Ready.\nRecording...\n");
  EXPECT_EQ(engine.manager->state(), AppState::recording);
  EXPECT_TRUE(engine.heard.empty());
  engine.time.runPosted();
  EXPECT_EQ(engine.heard, (States{AppState::idle, AppState::recording}));
}

TEST(EngineStatus, IsStoredWithoutAnObserver) {
  EngineFixture engine;
  engine.manager->setOnStateChange(nullptr);
  engine.manager->launch();
  engine.print("Ready.\n");
  EXPECT_EQ(engine.manager->state(), AppState::idle);
}

TEST(EngineStatus, IsAnnouncedOnceUntilItIsReadWithTheTimeOfTheFirstChange) {
  EngineFixture engine;
  engine.manager->launch();
  engine.manager->status();
  std::vector<Clock::TimePoint> announced;
  engine.manager->setOnStatusOutdated([&](auto since) { announced.push_back(since); });
  const auto first = engine.time.now() + 5ms;
  engine.time.advance(5ms);
  engine.print("[gpu-decode] text: \"one\"\n");
  engine.time.advance(5ms);
  engine.print("[gpu-decode] text: \"two\"\n[quillback] ERROR three\n");
  EXPECT_EQ(announced, std::vector{first});
  EXPECT_EQ(engine.manager->status().lastText, "two");
  engine.time.advance(5ms);
  engine.print("[quillback] ERROR four\n");
  EXPECT_EQ(announced, (std::vector{first, first + 10ms}));
}

TEST(EngineStatus, DropsANotificationWhoseSupervisorIsGone) {
  EngineFixture engine;
  engine.manager->launch();
  engine.manager.reset();
  engine.time.runPosted();
  EXPECT_TRUE(engine.heard.empty());
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
  EngineFixture engine;
  engine.manager->launch();
  ASSERT_EQ(engine.launcher.children.size(), 1U);
  const ChildOptions& options = engine.launcher.last().options;
  EXPECT_EQ(options.executable, *engine.bundle.engine);
  EXPECT_EQ(options.arguments, std::vector<std::string>{"run"});
  EXPECT_EQ(options.workingDirectory, "");
  EXPECT_EQ(engine.manager->state(), AppState::loading);
}

TEST(Launch, WithoutAnEngineLogsAndStopsEachTimeAndCountsNoCrash) {
  EngineFixture engine;
  engine.bundle.engine = "/nonexistent/quillback";
  for (std::size_t launches = 1; launches <= 5; ++launches) {
    engine.manager->launch();
    EXPECT_EQ(engine.manager->state(), AppState::stopped);
    EXPECT_EQ(engine.manager->lastError(), "quillback binary not found");
    EXPECT_EQ(engine.log.entries.size(), launches);
  }
  const testing::FakeLog::Entry notFound{LogLevel::error, "process",
                                         "quillback binary not found at /nonexistent/quillback"};
  EXPECT_EQ(engine.log.entries.front(), notFound);
  engine.time.advance(10s);
  EXPECT_TRUE(engine.launcher.startedAt.empty());
  EXPECT_TRUE(engine.notifications.posted.empty());
}

TEST(Launch, ThatFailsShowsWhyAndIsNotRepeated) {
  EngineFixture engine;
  engine.launcher.failure = "Cannot start quillback: Permission denied";
  engine.manager->launch();
  engine.time.advance(10s);
  EXPECT_EQ(engine.manager->state(), AppState::stopped);
  EXPECT_EQ(engine.manager->lastError(), "Cannot start quillback: Permission denied");
  EXPECT_EQ(engine.launcher.startedAt.size(), 1U);
  EXPECT_TRUE(engine.notifications.posted.empty());
  EXPECT_EQ(engine.heard, (States{AppState::loading, AppState::stopped}));
}

TEST(Launch, ForgetsTheLastErrorAndKeepsTheLastText) {
  EngineFixture engine;
  engine.manager->launch();
  engine.print("[quillback] ERROR one\n[gpu-decode] text: \"hello\"\n");
  engine.manager->launch();
  EXPECT_EQ(engine.manager->lastError(), "");
  EXPECT_EQ(engine.manager->lastText(), "hello");
}

TEST(Launch, ReplacesTheRunningEngine) {
  EngineFixture engine;
  engine.manager->launch();
  engine.manager->launch();
  ASSERT_EQ(engine.launcher.children.size(), 2U);
  EXPECT_EQ(engine.launcher.children[0]->terminations, 1);
  EXPECT_FALSE(engine.launcher.children[0]->running);
  EXPECT_TRUE(engine.launcher.last().running);
}

TEST(Launch, IgnoresWhatTheReplacedEnginePrintsAndHowItEnds) {
  EngineFixture engine;
  engine.launcher.endsAfterTerminate = 200ms;
  engine.manager->launch();
  const auto old = engine.launcher.children.back();
  engine.manager->launch();
  engine.print("Ready.\n");
  engine.heard.clear();
  old->print("Recording...\n[quillback] ERROR late\n[gpu-decode] text: \"late\"\n");
  old->options.onExit(1);
  engine.time.advance(10s);
  EXPECT_EQ(engine.manager->state(), AppState::idle);
  EXPECT_EQ(engine.manager->lastError(), "");
  EXPECT_EQ(engine.manager->lastText(), "");
  EXPECT_TRUE(engine.heard.empty());
  EXPECT_TRUE(engine.notifications.posted.empty());
}

TEST(Launch, LeavesOneEngineWhenAnotherLaunchOvertakesIt) {
  EngineFixture engine;
  bool overtaken = false;
  engine.launcher.onStarted = [&](FakeChild& /*child*/) {
    if (!std::exchange(overtaken, true)) engine.manager->launch();
  };
  engine.manager->launch();
  ASSERT_EQ(engine.launcher.children.size(), 2U);
  EXPECT_EQ(engine.launcher.running(), 1U);
  EXPECT_TRUE(engine.launcher.last().running);
  engine.print("Ready.\n");
  EXPECT_EQ(engine.manager->state(), AppState::idle);
  engine.manager->stopAndWait(2s);
  EXPECT_EQ(engine.launcher.running(), 0U);
}

TEST(Launch, StopsTheEngineThatAnotherLaunchStartedBetweenItsOwnStopAndStart) {
  EngineFixture engine;
  engine.launcher.endsAfterTerminate = 200ms;
  bool overtaken = false;
  engine.bundle.onAsked = [&] {
    if (!std::exchange(overtaken, true)) engine.manager->launch();
  };
  std::size_t runningAtStart = 0;
  engine.launcher.onStarted = [&](FakeChild& /*child*/) {
    runningAtStart = engine.launcher.running();
  };
  engine.manager->launch();
  ASSERT_EQ(engine.launcher.children.size(), 2U);
  EXPECT_EQ(runningAtStart, 1U);  // the first has ended before the second begins
  EXPECT_EQ(engine.launcher.children[0]->terminations, 1);
  EXPECT_EQ(engine.launcher.children[0]->kills, 0);
  EXPECT_TRUE(engine.launcher.last().running);
  engine.time.advance(10s);
  EXPECT_TRUE(engine.notifications.posted.empty());
}

TEST(Launch, LeavesNoEngineWhenAStopOvertakesIt) {
  EngineFixture engine;
  engine.launcher.onStarted = [&](FakeChild& /*child*/) { engine.manager->stopAndWait(2s); };
  engine.manager->launch();
  EXPECT_EQ(engine.launcher.running(), 0U);
}

TEST(Launch, ThatWasOvertakenAndFailsLeavesTheLaterOneItsState) {
  EngineFixture engine;
  engine.launcher.failure = "Cannot start quillback: Exec format error";
  engine.launcher.onFailing = [&] {
    engine.launcher.failure.reset();
    engine.manager->launch();
  };
  engine.manager->launch();
  EXPECT_EQ(engine.manager->state(), AppState::loading);
  EXPECT_EQ(engine.manager->lastError(), "");
  EXPECT_EQ(engine.launcher.running(), 1U);
}

TEST(StopAndWait, EndsThePollingAsSoonAsTheEngineHasEndedAndSendsNoKill) {
  EngineFixture engine;
  engine.launcher.endsAfterTerminate = 120ms;
  engine.manager->launch();
  const auto before = engine.time.now();
  engine.manager->stopAndWait(3s);
  EXPECT_EQ(engine.time.now() - before, 150ms);  // the first step of 50 ms after the exit
  EXPECT_EQ(engine.launcher.last().terminations, 1);
  EXPECT_EQ(engine.launcher.last().kills, 0);
}

TEST(StopAndWait, KillsAnEngineThatIgnoresTheRequestAfterTheTimeoutAndWaitsForItsEnd) {
  EngineFixture engine;
  engine.launcher.endsAfterTerminate.reset();
  engine.manager->launch();
  const auto before = engine.time.now();
  engine.manager->stopAndWait(2s);
  EXPECT_EQ(engine.time.now() - before, 2s);
  EXPECT_EQ(engine.launcher.last().kills, 1);
  EXPECT_EQ(engine.launcher.last().waits, 1);
}

TEST(StopAndWait, InALaunchTakesThreeSecondsBeforeTheKill) {
  EngineFixture engine;
  engine.launcher.endsAfterTerminate.reset();
  engine.manager->launch();
  engine.manager->launch();
  EXPECT_EQ(engine.launcher.startedAt[1] - engine.launcher.startedAt[0], 3s);
}

TEST(StopAndWait, KeepsTheStateAndAnnouncesNothing) {
  EngineFixture engine;
  engine.manager->launch();
  engine.print("Recording...\n");
  engine.heard.clear();
  engine.manager->stopAndWait(3s);
  engine.time.advance(10s);
  EXPECT_EQ(engine.manager->state(), AppState::recording);
  EXPECT_TRUE(engine.heard.empty());
  EXPECT_TRUE(engine.notifications.posted.empty());
  EXPECT_EQ(engine.launcher.startedAt.size(), 1U);
}

TEST(StopAndWait, WithoutAnEngineReturnsAtOnce) {
  EngineFixture engine;
  const auto before = engine.time.now();
  engine.manager->stopAndWait(3s);
  engine.manager->launch();
  engine.launcher.last().exit(0);
  engine.manager->stopAndWait(3s);
  EXPECT_EQ(engine.time.now(), before);
  EXPECT_EQ(engine.launcher.last().terminations, 0);
}

TEST(StopAndWait, DoesNotForgetAnEngineThatAnotherThreadStartedMeanwhile) {
  EngineFixture engine;
  engine.launcher.endsAfterTerminate = 200ms;
  engine.manager->launch();
  engine.time.happensAfter(100ms, [&] { engine.manager->launch(); });
  engine.manager->stopAndWait(3s);
  ASSERT_EQ(engine.launcher.children.size(), 2U);
  EXPECT_TRUE(engine.launcher.last().running);
  engine.manager->stopAndWait(3s);
  EXPECT_EQ(engine.launcher.running(), 0U);
}

TEST(Supervisor, IgnoresItsEngineOnceDestroyed) {
  EngineFixture engine;
  engine.manager->launch();
  const auto child = engine.launcher.children.back();
  engine.manager.reset();
  child->print("Ready.\n");
  child->exit(1);
  engine.time.advance(10s);
  EXPECT_EQ(engine.launcher.startedAt.size(), 1U);
  EXPECT_TRUE(engine.notifications.posted.empty());
}

}  // namespace
}  // namespace voxtrel
