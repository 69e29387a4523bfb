#include <gtest/gtest.h>

#include "app/AppDelegate.h"
#include "support/FakeDesktop.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using testing::FakeDesktop;
using testing::FakeOverlay;
using Texts = std::vector<std::string>;

struct StartUp : ::testing::Test {
  StartUp() {
    desktop.app.onTerminate = [this] { delegate->applicationWillTerminate(); };
  }

  void finishLaunching() { delegate->applicationDidFinishLaunching(); }
  void answerMicrophone(bool granted) {
    desktop.access.answer(granted);
    desktop.time.runPosted();
  }
  std::size_t starts() const { return desktop.launcher.startedAt.size(); }
  Texts logged(const std::string& category) const {
    Texts messages;
    for (const auto& entry : desktop.fakeLog.entries) {
      if (entry.category == category) messages.push_back(entry.message);
    }
    return messages;
  }

  FakeDesktop desktop;
  FakeOverlay overlay;
  std::shared_ptr<AppDelegate> delegate = std::make_shared<AppDelegate>(desktop, overlay);
};

TEST_F(StartUp, SetsUpTheNotifications) {
  finishLaunching();
  ASSERT_EQ(desktop.fakeNotifications.categories.size(), 1U);
  const NotificationCategory& category = desktop.fakeNotifications.categories.front();
  EXPECT_EQ(category.identifier, "CRASH_CATEGORY");
  ASSERT_EQ(category.actions.size(), 1U);
  EXPECT_EQ(category.actions.front().identifier, "RESTART_ACTION");
  EXPECT_EQ(category.actions.front().title, "Restart");
  EXPECT_TRUE(category.actions.front().foreground);
  EXPECT_FALSE(desktop.fakeNotifications.delegate.expired());
  EXPECT_EQ(desktop.fakeNotifications.setUp, (Texts{"categories", "delegate", "authorization"}));
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
  desktop.fakeNotifications.delegate.lock()->didReceive(
      {.actionIdentifier = "RESTART_ACTION", .notificationIdentifier = ""},
      [&] { completed = true; });
  EXPECT_EQ(starts(), 2U);
  EXPECT_TRUE(completed);
}

TEST_F(StartUp, EndsWhenTheMicrophoneIsRefused) {
  finishLaunching();
  answerMicrophone(false);
  EXPECT_EQ(logged("main")[2], "Microphone permission denied");
  EXPECT_EQ(desktop.app.terminations, 1);
  EXPECT_EQ(starts(), 0U);
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
  EXPECT_EQ(desktop.app.terminations, 0);
}

TEST_F(StartUp, EndsAtTheSixtiethTickWithoutTrust) {
  desktop.trust.trusted = false;
  finishLaunching();
  answerMicrophone(true);
  desktop.time.advance(29999ms);
  EXPECT_EQ(desktop.app.terminations, 0);
  desktop.time.advance(1ms);
  EXPECT_EQ(desktop.app.terminations, 1);
  EXPECT_EQ(desktop.trust.prompts.size(), 61U);
  EXPECT_EQ(desktop.time.timersRunning, 0);
  desktop.time.advance(60s);
  EXPECT_EQ(desktop.app.terminations, 1);
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
  EXPECT_EQ(desktop.app.terminations, 1);
  EXPECT_EQ(logged("main").back(), "Voxtrel terminating");
}

TEST_F(StartUp, QuitRequestBeforeTheGateEndsTheApplication) {
  finishLaunching();
  delegate->quitRequested();
  EXPECT_EQ(desktop.app.terminations, 1);
}

TEST_F(StartUp, TerminationStopsAnEngineThatNobodyAskedToStop) {
  finishLaunching();
  answerMicrophone(true);
  delegate->applicationWillTerminate();
  EXPECT_EQ(desktop.launcher.running(), 0U);
}

}  // namespace
}  // namespace voxtrel
