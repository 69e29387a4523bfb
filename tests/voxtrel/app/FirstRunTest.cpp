#include <gtest/gtest.h>

#include <filesystem>

#include "support/StartUpFixture.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

/// The start on a machine that has no model yet.
struct FirstRun : testing::StartUpFixture {
  FirstRun() {
    std::filesystem::remove(home.path() / kManifestPath);
    finishLaunching();
    desktop.time.advance(0ms);
  }

  testing::FakeFormWindows::State& window() { return desktop.forms.last(); }
  ModelDownloadView& download() { return *window().download; }
  void endSetup(int status) {
    desktop.launcher.last().exit(status);
    desktop.time.runPosted();
  }
  bool microphoneWasAsked() const { return static_cast<bool>(desktop.access.answer); }
};

TEST_F(FirstRun, FetchesTheModelInTheSetupWindow) {
  ASSERT_EQ(desktop.forms.windows.size(), 1U);
  EXPECT_EQ(window().options.title, "Voxtrel Setup");
  EXPECT_EQ(window().options.contentWidthPt, 420);
  EXPECT_EQ(window().options.contentHeightPt, 340);
  EXPECT_TRUE(window().visible);
  EXPECT_EQ(desktop.launcher.last().options.arguments,
            (std::vector<std::string>{"setup", "--model", "large-v3"}));
  EXPECT_FALSE(microphoneWasAsked());
  EXPECT_TRUE(desktop.trust.prompts.empty());
}

TEST_F(FirstRun, ContinuesOneSecondAfterTheDownload) {
  endSetup(0);
  desktop.time.advance(999ms);
  EXPECT_FALSE(microphoneWasAsked());
  desktop.time.advance(1ms);
  EXPECT_FALSE(window().alive);
  answerMicrophone(true);
  EXPECT_EQ(desktop.launcher.last().options.arguments, std::vector<std::string>{"run"});
  EXPECT_EQ(starts(), 2U);
}

TEST_F(FirstRun, ContinuesWhenTheUserSkips) {
  endSetup(1);
  EXPECT_TRUE(window().visible);
  EXPECT_FALSE(microphoneWasAsked());
  download().skip();
  EXPECT_FALSE(window().alive);
  answerMicrophone(true);
  EXPECT_EQ(desktop.launcher.last().options.arguments, std::vector<std::string>{"run"});
}

TEST_F(FirstRun, SkipInTheLastSecondOpensTheGateOnlyOnce) {
  endSetup(0);
  download().skip();
  answerMicrophone(true);
  desktop.time.advance(1s);
  desktop.time.runPosted();
  EXPECT_EQ(desktop.trust.prompts.size(), 1U);
  EXPECT_EQ(starts(), 2U);
  EXPECT_EQ(desktop.launcher.running(), 1U);
}

TEST_F(FirstRun, StaysParkedWhenTheWindowIsClosed) {
  desktop.forms.closeLast();
  desktop.time.advance(60s);
  EXPECT_FALSE(microphoneWasAsked());
  EXPECT_EQ(desktop.item.menusSet, 0);
  EXPECT_EQ(desktop.application.terminations, 0);
}

TEST_F(FirstRun, AnotherStartShowsTheClosedWindowAgainWithTheSetupThatRuns) {
  desktop.forms.closeLast();
  delegate->reopenRequested();
  EXPECT_TRUE(window().visible);
  EXPECT_EQ(desktop.forms.windows.size(), 1U);
  EXPECT_EQ(starts(), 1U);
  endSetup(1);
  download().skip();
  EXPECT_TRUE(microphoneWasAsked());
}

TEST_F(FirstRun, AnotherStartShowsNoSetupWindowOnceTheSetupIsOver) {
  endSetup(0);
  desktop.time.advance(1s);
  const std::size_t windows = desktop.forms.windows.size();
  delegate->reopenRequested();
  EXPECT_EQ(desktop.forms.windows.size(), windows);
  EXPECT_FALSE(window().visible);
}

TEST_F(FirstRun, ContinuesWhenTheSetupBehindAClosedWindowSucceeds) {
  desktop.forms.closeLast();
  endSetup(0);
  desktop.time.advance(1s);
  EXPECT_TRUE(microphoneWasAsked());
}

TEST_F(FirstRun, AsksNothingOnceTheDelegateIsGone) {
  delegate.reset();
  endSetup(0);
  desktop.time.advance(5s);
  EXPECT_FALSE(microphoneWasAsked());
}

TEST_F(FirstRun, LooksForTheModelThatTheConfigurationNamesFirst) {
  const std::size_t before = desktop.forms.windows.size();
  home.write(".config/quillback/config.toml",
             "[model]\nwhisper_model = \"tiny\"\nwhisper_model = \"base\"\n");
  home.write(".local/share/quillback/weights/whisper-tiny/manifest.json", "{}");
  finishLaunching();
  EXPECT_EQ(desktop.forms.windows.size(), before);
  EXPECT_TRUE(microphoneWasAsked());
}

}  // namespace
}  // namespace voxtrel
