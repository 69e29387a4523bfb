#include <gtest/gtest.h>

#include <thread>
#include <utility>

#include "support/StatusBarFixture.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

using StatusBar = testing::StatusBarFixture;

TEST_F(StatusBar, BeginsWithTheLoadingSymbolTheIdleLabelAndARunningEngine) {
  EXPECT_EQ(desktop.item.symbol, "mic.badge.xmark");
  EXPECT_EQ(title(status), "Ready — hold Right Cmd");
  EXPECT_EQ(title(lastText), "Last: —");
  EXPECT_EQ(desktop.launcher.running(), 1U);
  EXPECT_EQ(logged(), Texts{"StatusBarController initialized"});
  desktop.time.advance(kTick - 1ms);
  EXPECT_EQ(title(status), "Ready — hold Right Cmd");
  desktop.time.advance(1ms);
  EXPECT_EQ(title(status), "Loading model...");
}

TEST_F(StatusBar, BuildsItsMenuOnceAndExactly) {
  struct Expected {
    std::string title, key;
    bool enabled, separator;
  };
  const std::vector<Expected> expected = {
      {"Ready — hold Right Cmd", "", false, false},
      {"Last: —", "", false, false},
      {"", "", true, true},
      {"Settings...", ",", true, false},
      {"Check for Updates...", "", true, false},
      {"Restart", "r", true, false},
      {"Quit Voxtrel", "q", true, false},
  };
  ASSERT_EQ(desktop.item.rows.size(), expected.size());
  for (std::size_t row = 0; row < expected.size(); ++row) {
    SCOPED_TRACE(row);
    const MenuItem& item = desktop.item.rows[row];
    EXPECT_EQ(item.separator, expected[row].separator);
    if (item.separator) continue;
    EXPECT_EQ(item.title, expected[row].title);
    EXPECT_EQ(item.keyEquivalent, expected[row].key);
    EXPECT_EQ(item.enabled, expected[row].enabled);
    EXPECT_EQ(static_cast<bool>(item.action), row >= Row::settings);
  }
  print("Ready.\nRecording...\n");
  EXPECT_EQ(desktop.item.menusSet, 1);
}

TEST_F(StatusBar, FollowsTheEngineThroughEveryState) {
  const auto shows = [&](const std::string& symbol, const std::string& label) {
    EXPECT_EQ(desktop.item.symbol, symbol);
    EXPECT_EQ(title(status), label);
  };
  print("loading the model\n");
  shows("mic.badge.xmark", "Loading model...");
  print("Ready.\n");
  shows("mic", "Ready — hold Right Cmd");
  print("Recording...\n");
  shows("mic.fill", "Recording...");
  print("Processing 2.3s audio\n");
  shows("waveform", "Transcribing...");
  desktop.launcher.last().exit(0);
  desktop.time.advance(kTick);
  shows("mic.slash", "Voxtrel stopped — click Restart");
}

TEST_F(StatusBar, ShowsAnErrorOnlyWhileStopped) {
  print("[quillback] ERROR: no model\n");
  EXPECT_EQ(title(status), "Loading model...");
  print("Ready.\n");
  EXPECT_EQ(title(status), "Ready — hold Right Cmd");
  desktop.launcher.last().exit(0);
  desktop.time.advance(kTick);
  EXPECT_EQ(title(status), "Error: [quillback] ERROR: no model");
}

TEST_F(StatusBar, ShowsALongTranscriptionInFull) {
  const std::string text = std::string(5000, 'w') + " & _end_";
  print("[gpu-decode] text: \"" + text + "\"\n");
  EXPECT_EQ(title(lastText), "Last: " + text);
  print("[gpu-decode] text: \"\"\n");
  EXPECT_EQ(title(lastText), "Last: —");
}

TEST_F(StatusBar, ShowsTheOverlayOnEveryRecordingAndHidesItOnce) {
  print("Ready.\nProcessing audio\nReady.\n");
  EXPECT_EQ(overlay.calls, "");
  print("Recording...\n");
  EXPECT_EQ(overlay.calls, "s");
  print("Recording...\n");
  EXPECT_EQ(overlay.calls, "ss");
  print("Processing audio\n");
  EXPECT_EQ(overlay.calls, "ssh");
  print("Ready.\n");
  EXPECT_EQ(overlay.calls, "ssh");
}

TEST_F(StatusBar, SleepsWhileNothingChanges) {
  print("Ready.\n");
  const int timers = desktop.time.timersStarted;
  const auto refreshes = desktop.item.symbols.size();
  desktop.time.advance(1h);
  EXPECT_EQ(desktop.time.timersStarted, timers);
  EXPECT_EQ(desktop.time.timersRunning, 0);
  EXPECT_EQ(desktop.item.symbols.size(), refreshes);
  print("Recording...\n[gpu-decode] text: \"one\"\nProcessing audio\n");
  desktop.time.advance(1h);
  EXPECT_EQ(desktop.time.timersStarted, timers + 1);
  EXPECT_EQ(desktop.item.symbols.size(), refreshes + 1);
}

TEST_F(StatusBar, ShowsAChangeAtTheFirstTickAfterIt) {
  for (const auto sinceTick : {0ms, 1ms, 49ms}) {
    SCOPED_TRACE(sinceTick.count());
    print("Ready.\n");
    desktop.time.advance(1s + sinceTick);
    desktop.launcher.last().print("Recording...\n");
    desktop.time.advance(kTick - sinceTick - 1ms);
    EXPECT_EQ(desktop.item.symbol, "mic");
    desktop.time.advance(1ms);
    EXPECT_EQ(desktop.item.symbol, "mic.fill");
  }
}

TEST_F(StatusBar, ShowsATextWithoutAChangeOfStateAtTheFirstTickAfterIt) {
  desktop.time.advance(1234ms);
  desktop.launcher.last().print("[gpu-decode] text: \"hello\"\n");
  desktop.time.advance(15ms);
  EXPECT_EQ(title(lastText), "Last: —");
  desktop.time.advance(1ms);
  EXPECT_EQ(title(lastText), "Last: hello");
}

TEST_F(StatusBar, ShowsAChangeFromAnotherThread) {
  desktop.time.advance(1s);
  std::jthread([&] { desktop.launcher.last().print("Ready.\n"); }).join();
  desktop.time.advance(kTick);
  EXPECT_EQ(desktop.item.symbol, "mic");
}

TEST_F(StatusBar, ShowsAChangeDuringTheRefreshAtTheNextTick) {
  bool printed = false;
  desktop.item.onSymbol = [&] {
    if (!std::exchange(printed, true)) desktop.launcher.last().print("Recording...\n");
  };
  print("Ready.\n");
  desktop.time.advance(kTick - 1ms);
  EXPECT_EQ(desktop.item.symbol, "mic");
  desktop.time.advance(1ms);
  EXPECT_EQ(desktop.item.symbol, "mic.fill");
}

TEST_F(StatusBar, ShowsAChangeAtOnceWhenTheMainThreadMissedTheTick) {
  desktop.time.advance(1s + 48ms);
  desktop.time.happensAfter(1ms, [&] { desktop.launcher.last().print("Ready.\n"); });
  desktop.time.sleepFor(3ms);
  desktop.time.runPosted();
  EXPECT_EQ(desktop.item.symbol, "mic");
  desktop.launcher.last().print("Recording...\n");
  desktop.time.advance(48ms);
  EXPECT_EQ(desktop.item.symbol, "mic");  // the ticks stay where they were
  desktop.time.advance(1ms);
  EXPECT_EQ(desktop.item.symbol, "mic.fill");
}

TEST_F(StatusBar, ShowsNothingAfterShutdown) {
  desktop.launcher.last().print("Ready.\n");
  desktop.time.runPosted();
  controller->shutdown();
  controller->processManager()->launch();
  print("Recording...\n");
  desktop.time.advance(1s);
  EXPECT_EQ(desktop.item.symbols, Texts{"mic.badge.xmark"});
  EXPECT_EQ(desktop.time.timersRunning, 0);
}

TEST_F(StatusBar, CommandsReachSettingsAndUpdater) {
  desktop.item.choose(Row::settings);
  EXPECT_EQ(desktop.forms.windows.size(), 1U);
  desktop.item.choose(Row::updates);
  EXPECT_EQ(desktop.updater.checks, 1);
}

TEST_F(StatusBar, RestartReplacesTheEngineAndStopsItForThreeSecondsAtMost) {
  desktop.launcher.last().endsAfterTerminate.reset();
  desktop.item.choose(Row::restart);
  ASSERT_EQ(starts(), 2U);
  EXPECT_EQ(desktop.launcher.startedAt[1] - desktop.launcher.startedAt[0], 3s);
  EXPECT_EQ(desktop.launcher.running(), 1U);
}

TEST_F(StatusBar, RestartAfterGivingUpGrantsAllRelaunchesAgain) {
  for (int exits = 0; exits < 4; ++exits) {
    desktop.launcher.last().exit(1);
    desktop.time.advance(4s);
  }
  EXPECT_EQ(title(status), "Error: Exited with code 1");
  EXPECT_EQ(starts(), 4U);
  desktop.item.choose(Row::restart);
  EXPECT_EQ(starts(), 5U);
  desktop.notifications.posted.clear();
  desktop.launcher.last().exit(1);
  EXPECT_EQ(desktop.notifications.bodies(), Texts{"Process crashed. Restarting (attempt 1/3)..."});
}

TEST_F(StatusBar, QuitStopsTheEngineBeforeTheApplicationEndsAndShutdownMayBeRepeated) {
  desktop.launcher.last().endsAfterTerminate.reset();
  const auto before = desktop.time.now();
  std::size_t runningAtTerminate = 1;
  desktop.application.onTerminate = [&] {
    runningAtTerminate = desktop.launcher.running();
    controller->shutdown();
  };
  desktop.item.choose(Row::quit);
  EXPECT_EQ(desktop.application.terminations, 1);
  EXPECT_EQ(runningAtTerminate, 0U);
  EXPECT_EQ(desktop.time.now() - before, 2s);
  EXPECT_EQ(desktop.sleep.removed, (Texts{"sleep", "wake"}));
  EXPECT_EQ(desktop.time.timersRunning, 0);
}

TEST_F(StatusBar, SleepWhileRecordingStopsTheEngineAndWakeLaunchesIt) {
  print("Ready.\nRecording...\n");
  overlay.calls.clear();
  desktop.sleep.willSleep();
  EXPECT_EQ(desktop.launcher.running(), 0U);
  EXPECT_EQ(overlay.calls, "h");
  desktop.time.advance(60s);
  EXPECT_EQ(starts(), 1U);

  desktop.sleep.didWake();
  EXPECT_EQ(desktop.item.symbol, "mic.badge.xmark");
  desktop.time.advance(kTick);
  EXPECT_EQ(desktop.item.symbol, "mic.fill");  // the supervisor's state has not changed yet
  desktop.time.advance(1449ms);
  EXPECT_EQ(starts(), 1U);
  desktop.time.advance(1ms);
  EXPECT_EQ(starts(), 2U);
  EXPECT_EQ(logged(), (Texts{"StatusBarController initialized", "System sleeping, wasRunning=true",
                             "System woke, restarting process after delay"}));
}

TEST_F(StatusBar, ShowsTheLoadingSymbolAfterWakeOnlyUntilTheNextTick) {
  print("Ready.\n");
  desktop.time.advance(1s + 30ms);
  desktop.sleep.willSleep();
  desktop.sleep.didWake();  // 50 ms later, a step of the wait for the engine's end
  desktop.time.advance(19ms);
  EXPECT_EQ(desktop.item.symbol, "mic.badge.xmark");
  desktop.time.advance(1ms);
  EXPECT_EQ(desktop.item.symbol, "mic");
}

TEST_F(StatusBar, SecondWakeAfterOneSleepLaunchesNothing) {
  desktop.sleep.willSleep();
  desktop.sleep.didWake();
  desktop.sleep.didWake();
  desktop.time.advance(10s);
  EXPECT_EQ(starts(), 2U);
}

TEST_F(StatusBar, EngineThatWasStoppedBeforeSleepStaysStopped) {
  desktop.launcher.last().exit(0);
  desktop.time.advance(kTick);
  overlay.calls.clear();
  desktop.sleep.willSleep();
  EXPECT_EQ(overlay.calls, "h");
  desktop.sleep.didWake();
  desktop.time.advance(10s);
  EXPECT_EQ(starts(), 1U);
  EXPECT_EQ(logged().back(), "System sleeping, wasRunning=false");
}

TEST_F(StatusBar, WakeKeepsTheCrashCount) {
  desktop.launcher.last().exit(1);
  desktop.time.advance(1s);
  desktop.sleep.willSleep();
  desktop.sleep.didWake();
  desktop.time.advance(2s);
  desktop.launcher.last().exit(1);
  EXPECT_EQ(desktop.notifications.bodies().back(), "Process crashed. Restarting (attempt 2/3)...");
}

TEST_F(StatusBar, ThatIsGoneBeforeTheLaunchAfterWakeLaunchesNothing) {
  desktop.sleep.willSleep();
  desktop.sleep.didWake();
  controller.reset();
  desktop.time.advance(10s);
  EXPECT_EQ(starts(), 1U);
  EXPECT_EQ(desktop.time.timersRunning, 0);
  desktop.item.choose(Row::restart);  // the menu outlives it and does nothing
  EXPECT_EQ(starts(), 1U);
}

}  // namespace
}  // namespace voxtrel
