#include <gtest/gtest.h>

#include "support/StatusBarFixture.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view kConfigPath = ".config/quillback/config.toml";
constexpr std::string_view kManifestPath =
    ".local/share/quillback/weights/whisper-large-v3/manifest.json";

struct StatusBarWindows : testing::StatusBarFixture {
  testing::FakeFormWindows::State& window(std::size_t index) {
    return *desktop.forms.windows.at(index);
  }
  std::size_t windows() const { return desktop.forms.windows.size(); }
  ModelDownloadView& download() { return *desktop.forms.last().download; }

  void openSettings() { desktop.item.choose(Row::settings); }
  void saveWithoutWeights() {
    openSettings();
    desktop.forms.last().settings->saveAndRestart();
    desktop.time.runPosted();
  }
  /// The setup of the newest download window ends.
  void endSetup(int exitStatus) {
    desktop.time.advance(0ms);
    desktop.launcher.last().exit(exitStatus);
    desktop.time.runPosted();
  }
  std::vector<std::string> lastArguments() { return desktop.launcher.last().options.arguments; }
};

TEST_F(StatusBarWindows, SettingsOpenInAWindowOfTheirOwn) {
  openSettings();
  ASSERT_EQ(windows(), 1U);
  EXPECT_TRUE(window(0).settings);
  EXPECT_TRUE(window(0).visible);
  EXPECT_EQ(window(0).options.title, "Voxtrel Settings");
  EXPECT_EQ(window(0).options.contentWidthPt, 420);
  EXPECT_EQ(window(0).options.contentHeightPt, 280);
}

TEST_F(StatusBarWindows, OpeningTheSettingsTwiceBringsTheOneWindowToTheFront) {
  openSettings();
  openSettings();
  EXPECT_EQ(windows(), 1U);
  EXPECT_EQ(window(0).timesInFront, 2);
}

TEST_F(StatusBarWindows, SettingsOpenedAfterClosingAreReadFromTheFileAgain) {
  openSettings();
  EXPECT_EQ(window(0).settings->selectedOutputIndex(), 0U);
  desktop.forms.closeLast();
  home.write(kConfigPath, "[model]\ntranslate = true\n");
  openSettings();
  ASSERT_EQ(windows(), 2U);
  EXPECT_FALSE(window(0).alive);
  EXPECT_EQ(window(1).settings->selectedOutputIndex(), 1U);
}

TEST_F(StatusBarWindows, SavingWithTheModelAtHandClosesTheSettingsAndRestartsTheEngine) {
  home.write(kManifestPath, "{}");
  openSettings();
  window(0).settings->selectInput(11);
  window(0).settings->saveAndRestart();
  EXPECT_FALSE(window(0).visible);
  EXPECT_TRUE(window(0).alive);
  EXPECT_EQ(windows(), 1U);
  EXPECT_EQ(starts(), 2U);
  EXPECT_EQ(desktop.launcher.running(), 1U);
  EXPECT_EQ(ConfigManager(home.path().string()).readSettings().language, "de");
}

TEST_F(StatusBarWindows, SavingGrantsTheFullCrashAllowanceAgain) {
  home.write(kManifestPath, "{}");
  desktop.launcher.last().exit(1);
  desktop.time.advance(1s);
  openSettings();
  window(0).settings->saveAndRestart();
  desktop.launcher.last().exit(1);
  EXPECT_EQ(desktop.notifications.bodies().back(), "Process crashed. Restarting (attempt 1/3)...");
}

TEST_F(StatusBarWindows, SavingWithoutTheModelStopsTheEngineAndDownloads) {
  saveWithoutWeights();
  ASSERT_EQ(windows(), 2U);
  EXPECT_FALSE(window(0).visible);
  EXPECT_EQ(desktop.launcher.children.front()->running, false);
  EXPECT_TRUE(window(1).download);
  EXPECT_TRUE(window(1).visible);
  EXPECT_EQ(window(1).options.title, "Voxtrel — Download Model");
  EXPECT_EQ(window(1).options.contentWidthPt, 420);
  EXPECT_EQ(window(1).options.contentHeightPt, 340);
  desktop.time.advance(0ms);
  EXPECT_EQ(lastArguments(), (std::vector<std::string>{"setup", "--model", "large-v3"}));
}

TEST_F(StatusBarWindows, DownloadThatCompletesClosesItsWindowAndStartsTheEngine) {
  saveWithoutWeights();
  endSetup(0);
  desktop.time.advance(999ms);
  EXPECT_TRUE(window(1).visible);
  EXPECT_EQ(desktop.launcher.running(), 0U);
  desktop.time.advance(1ms);
  EXPECT_FALSE(window(1).alive);
  EXPECT_EQ(lastArguments(), std::vector<std::string>{"run"});
  EXPECT_EQ(desktop.launcher.running(), 1U);
}

TEST_F(StatusBarWindows, SkippedDownloadClosesItsWindowAndStartsTheEngine) {
  saveWithoutWeights();
  endSetup(1);
  download().skip();
  EXPECT_FALSE(window(1).alive);
  EXPECT_EQ(lastArguments(), std::vector<std::string>{"run"});
  EXPECT_EQ(desktop.launcher.running(), 1U);
}

TEST_F(StatusBarWindows, SkipInTheLastSecondStartsTheEngineAndTheCompletionStartsItAgain) {
  saveWithoutWeights();
  endSetup(0);
  const std::size_t before = starts();
  download().skip();
  EXPECT_EQ(starts(), before + 1);
  desktop.time.advance(1s);
  EXPECT_EQ(starts(), before + 2);
  EXPECT_EQ(desktop.launcher.running(), 1U);
}

TEST_F(StatusBarWindows, DownloadThatEndsInAClosedWindowStillStartsTheEngine) {
  saveWithoutWeights();
  desktop.forms.closeLast();
  endSetup(0);
  desktop.time.advance(1s);
  EXPECT_EQ(lastArguments(), std::vector<std::string>{"run"});
  EXPECT_EQ(desktop.launcher.running(), 1U);
}

TEST_F(StatusBarWindows, ControllerThatIsGoneIsNotAskedToRestart) {
  saveWithoutWeights();
  desktop.time.advance(0ms);
  const std::size_t before = starts();
  controller.reset();
  endSetup(0);
  desktop.time.advance(5s);
  EXPECT_EQ(starts(), before);
}

}  // namespace
}  // namespace voxtrel
