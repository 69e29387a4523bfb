#include <gtest/gtest.h>

#include "support/StartUpFixture.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

using StartUp = testing::StartUpFixture;

TEST_F(StartUp, SetsUpTheNotifications) {
  finishLaunching();
  ASSERT_EQ(desktop.notifications.categories.size(), 1U);
  const NotificationCategory& category = desktop.notifications.categories.front();
  EXPECT_EQ(category.identifier, "CRASH_CATEGORY");
  ASSERT_EQ(category.actions.size(), 1U);
  EXPECT_EQ(category.actions.front().identifier, "RESTART_ACTION");
  EXPECT_EQ(category.actions.front().title, "Restart");
  EXPECT_TRUE(category.actions.front().foreground);
  EXPECT_FALSE(desktop.notifications.delegate.expired());
  EXPECT_EQ(desktop.notifications.setUp, (Texts{"categories", "delegate", "authorization"}));
}

TEST_F(StartUp, StartsTheEngineOnceRightAfterTheMicrophoneAnswer) {
  finishLaunching();
  EXPECT_EQ(starts(), 0U);
  desktop.access.answer(true);
  EXPECT_EQ(starts(), 0U);  // the answer may come on any thread
  desktop.time.runPosted();
  EXPECT_EQ(starts(), 1U);
  desktop.time.advance(60s);
  EXPECT_EQ(starts(), 1U);
  EXPECT_EQ(desktop.trust.prompts, std::vector<bool>{true});
  EXPECT_EQ(logged("main").front(), "Voxtrel launching");
}

TEST_F(StartUp, MakesTheRestartButtonWork) {
  finishLaunching();
  answerMicrophone(true);
  bool completed = false;
  desktop.notifications.delegate.lock()->didReceive(
      {.actionIdentifier = "RESTART_ACTION", .notificationIdentifier = ""},
      [&] { completed = true; });
  EXPECT_EQ(starts(), 2U);
  EXPECT_TRUE(completed);
}

TEST_F(StartUp, WarnsWhenTheMicrophoneIsRefusedAndEndsOnceAnswered) {
  finishLaunching();
  answerMicrophone(false);
  EXPECT_EQ(desktop.log.entries.back(),
            (testing::FakeLog::Entry{LogLevel::error, "main", "Microphone permission denied"}));
  ASSERT_EQ(desktop.alerts.shown.size(), 1U);
  const Alert& alert = desktop.alerts.shown.front();
  EXPECT_EQ(alert.messageText, "Microphone Permission Required");
  EXPECT_EQ(alert.informativeText,
            "Voxtrel needs microphone access to capture audio for speech-to-text. Please grant "
            "access in System Settings > Privacy & Security > Microphone, then relaunch the app.");
  EXPECT_EQ(alert.buttons, (Texts{"Open Settings", "Quit"}));
  EXPECT_EQ(desktop.application.terminations, 0);
  desktop.alerts.onAnswer(1);
  EXPECT_TRUE(desktop.privacy.opened.empty());
  EXPECT_EQ(desktop.application.terminations, 1);
  EXPECT_EQ(starts(), 0U);
}

TEST_F(StartUp, OpensTheMicrophonePaneBeforeItEnds) {
  finishLaunching();
  answerMicrophone(false);
  desktop.application.onTerminate = [&] { EXPECT_EQ(desktop.privacy.opened.size(), 1U); };
  desktop.alerts.onAnswer(0);
  EXPECT_EQ(desktop.privacy.opened, std::vector{PrivacyPane::microphone});
  EXPECT_EQ(desktop.application.terminations, 1);
}

TEST_F(StartUp, OpensTheGateOnTheTickAfterTrustIsGranted) {
  desktop.trust.trusted = false;
  finishLaunching();
  answerMicrophone(true);
  desktop.time.advance(10s);
  EXPECT_EQ(starts(), 0U);
  desktop.trust.trusted = true;
  desktop.time.advance(499ms);
  EXPECT_EQ(starts(), 0U);
  desktop.time.advance(1ms);
  EXPECT_EQ(starts(), 1U);
  EXPECT_EQ(desktop.trust.prompts.size(), 22U);  // one with a prompt, then 21 ticks
  desktop.time.advance(60s);
  EXPECT_EQ(starts(), 1U);
  EXPECT_EQ(desktop.application.terminations, 0);
}

TEST_F(StartUp, WarnsAtTheSixtiethTickWithoutTrustAndEndsOnceAnswered) {
  desktop.trust.trusted = false;
  finishLaunching();
  answerMicrophone(true);
  desktop.time.advance(29999ms);
  EXPECT_TRUE(desktop.alerts.shown.empty());
  desktop.time.advance(1ms);
  EXPECT_EQ(desktop.trust.prompts.size(), 61U);
  EXPECT_EQ(desktop.time.timersRunning, 0);
  ASSERT_EQ(desktop.alerts.shown.size(), 1U);
  const Alert& alert = desktop.alerts.shown.front();
  EXPECT_EQ(alert.messageText, "Accessibility Permission Required");
  EXPECT_EQ(
      alert.informativeText,
      "Voxtrel needs Accessibility permission to detect the push-to-talk hotkey. Please grant "
      "access in System Settings > Privacy & Security > Accessibility, then relaunch the "
      "app.");
  EXPECT_EQ(alert.buttons, (Texts{"Open Settings", "Quit"}));
  desktop.trust.trusted = true;  // too late
  desktop.time.advance(60s);
  EXPECT_EQ(starts(), 0U);
  EXPECT_EQ(desktop.application.terminations, 0);
  desktop.alerts.onAnswer(0);
  EXPECT_EQ(desktop.privacy.opened, std::vector{PrivacyPane::accessibility});
  EXPECT_EQ(desktop.application.terminations, 1);
}

TEST_F(StartUp, RegistersTheLoginItemThatTheUserDefaultsAskFor) {
  desktop.defaults.values["launchAtLogin"] = true;
  finishLaunching();
  EXPECT_EQ(desktop.loginItem.asked, std::vector<bool>{true});
}

TEST_F(StartUp, LeavesALoginItemAloneThatWasTurnedOff) {
  desktop.loginItem.isDecided = true;
  desktop.defaults.values["launchAtLogin"] = true;
  finishLaunching();
  EXPECT_TRUE(desktop.loginItem.asked.empty());
  EXPECT_FALSE(desktop.loginItem.enabled);
}

TEST_F(StartUp, LeavesTheLoginItemAloneUnlessTheUserDefaultsAskForIt) {
  desktop.loginItem.enabled = true;
  desktop.defaults.values["launchAtLogin"] = false;
  finishLaunching();
  EXPECT_TRUE(desktop.loginItem.asked.empty());
  EXPECT_TRUE(desktop.loginItem.enabled);
}

TEST_F(StartUp, ContinuesWithoutALoginItemThatCannotBeRegistered) {
  desktop.defaults.values["launchAtLogin"] = true;
  desktop.loginItem.canEnable = false;
  finishLaunching();
  answerMicrophone(true);
  EXPECT_EQ(starts(), 1U);
}

TEST_F(StartUp, MicrophoneAnswerAfterTheEndIsIgnored) {
  finishLaunching();
  delegate.reset();
  answerMicrophone(true);
  EXPECT_EQ(starts(), 0U);
}

TEST_F(StartUp, QuitRequestStopsTheEngineAndEndsTheApplication) {
  finishLaunching();
  answerMicrophone(true);
  delegate->quitRequested();
  EXPECT_EQ(desktop.launcher.running(), 0U);
  EXPECT_EQ(desktop.application.terminations, 1);
  EXPECT_EQ(logged("main").back(), "Voxtrel terminating");
}

TEST_F(StartUp, QuitRequestBeforeTheGateEndsTheApplication) {
  finishLaunching();
  delegate->quitRequested();
  EXPECT_EQ(desktop.application.terminations, 1);
}

TEST_F(StartUp, TerminationStopsARunningEngine) {
  finishLaunching();
  answerMicrophone(true);
  delegate->applicationWillTerminate();
  EXPECT_EQ(desktop.launcher.running(), 0U);
}

TEST_F(StartUp, OpensTheSettingsThatWereAskedForOnceTheGateIsOpen) {
  finishLaunching();
  delegate->settingsRequested();
  EXPECT_TRUE(desktop.forms.windows.empty());
  answerMicrophone(true);
  ASSERT_EQ(desktop.forms.windows.size(), 1U);
  EXPECT_EQ(desktop.forms.last().options.title, "Voxtrel Settings");
  delegate->settingsRequested();
  EXPECT_EQ(desktop.forms.windows.size(), 1U) << "the open window comes forward";
}

TEST_F(StartUp, RestartsTheEngineWhenAskedOnceItRuns) {
  finishLaunching();
  delegate->restartRequested();
  EXPECT_EQ(starts(), 0U);
  answerMicrophone(true);
  delegate->restartRequested();
  EXPECT_EQ(starts(), 2U);
}

}  // namespace
}  // namespace voxtrel
