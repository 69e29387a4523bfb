#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "support/FakeOverlayPorts.h"
#include "support/Samples.h"
#include "voxtrel/overlay/RecordingOverlay.h"

namespace voxtrel {
namespace {

using testing::BufferOver;
using testing::Diary;
using ::testing::ElementsAre;
using testing::FakeLog;
using testing::FakeOverlayPorts;
using ::testing::IsEmpty;
using testing::sineAtBin;

struct RecordingOverlayTest : ::testing::Test, FakeOverlayPorts {
  // What is on the screen after one tick of the timer.
  testing::RecordingCanvas nextFrame() const {
    frameTimer.task();
    return stage.window->paint();
  }
  // The height of the bar that holds bins 23 to 34.
  double heightOfBarEight() const { return nextFrame().filled.at(9).rect.height; }
  void feed(const std::vector<float>& samples) const {
    microphone.options.onBuffer(BufferOver(samples));
  }

  std::unique_ptr<RecordingOverlay> overlay = std::make_unique<RecordingOverlay>(ports());
};

const Diary kShown = {"window made", "content set", "window in front", "microphone opened",
                      "timer started"};

TEST_F(RecordingOverlayTest, ShowsTheWindowThenOpensTheMicrophoneThenStartsTheTimer) {
  overlay->show();
  EXPECT_EQ(diary, kShown);
  EXPECT_EQ(stage.window->cornerRadius, 10.5);
  EXPECT_EQ(microphone.options.bufferSizeFrames, 512U);
  EXPECT_EQ(frameTimer.interval.count(), 0.016666666666666666);
}

TEST_F(RecordingOverlayTest, StopsTheTimerThenTheMicrophoneThenRemovesTheWindow) {
  overlay->show();
  diary.clear();
  overlay->hide();
  EXPECT_THAT(diary, ElementsAre("timer stopped", "microphone closed", "window out"));
}

TEST_F(RecordingOverlayTest, ShowingTwiceMakesOneWindowOneCaptureAndOneTimer) {
  overlay->show();
  overlay->show();
  EXPECT_EQ(diary, kShown);
  EXPECT_EQ(stage.windowsMade, 1);
  EXPECT_EQ(microphone.opened, 1);
  EXPECT_EQ(frameTimer.started, 1);
}

TEST_F(RecordingOverlayTest, HidingWhileHiddenChangesNothing) {
  overlay->hide();
  EXPECT_THAT(diary, IsEmpty());
  overlay->show();
  overlay->hide();
  diary.clear();
  overlay->hide();
  EXPECT_THAT(diary, IsEmpty());
}

TEST_F(RecordingOverlayTest, StandsAtTheBottomCentreOfTheMainScreensFullFrame) {
  stage.mainScreen = Rect{0, 0, 1440, 900};
  overlay->show();
  EXPECT_EQ(stage.window->rect, (Rect{675, 90, 90, 21}));
}

TEST_F(RecordingOverlayTest, StandsOnTheMainScreenOfSeveral) {
  stage.mainScreen = Rect{-1920, 300, 1920, 1080};
  stage.screens = {{0, 0, 1440, 900}, {-1920, 300, 1920, 1080}};
  overlay->show();
  EXPECT_EQ(stage.window->rect, (Rect{-1005, 390, 90, 21}));
}

TEST_F(RecordingOverlayTest, UsesTheFirstScreenWithoutAMainOne) {
  stage.mainScreen.reset();
  stage.screens = {{100, 0, 1000, 600}, {1100, 0, 1000, 600}};
  overlay->show();
  EXPECT_EQ(stage.window->rect, (Rect{555, 90, 90, 21}));
}

TEST_F(RecordingOverlayTest, AsksForTheMainScreenAtEveryShowing) {
  overlay->show();
  overlay->hide();
  stage.mainScreen = Rect{1440, 0, 800, 600};
  overlay->show();
  EXPECT_EQ(stage.window->rect, (Rect{1795, 90, 90, 21}));
}

TEST_F(RecordingOverlayTest, AsksForARedrawAtEveryTick) {
  overlay->show();
  for (int tick = 0; tick < 3; ++tick) frameTimer.task();
  EXPECT_EQ(stage.window->displaysWanted, 3);
}

TEST_F(RecordingOverlayTest, BarsFollowTheMicrophone) {
  overlay->show();
  EXPECT_EQ(heightOfBarEight(), 1.5);
  feed(sineAtBin(30));
  EXPECT_NEAR(heightOfBarEight(), 15 * 0.55, 1e-4);
}

TEST_F(RecordingOverlayTest, EveryShowingStartsWithBarsAtRest) {
  overlay->show();
  feed(sineAtBin(30));
  EXPECT_GT(heightOfBarEight(), 8);
  overlay->hide();
  overlay->show();
  EXPECT_EQ(heightOfBarEight(), 1.5);
  EXPECT_EQ(stage.windowsMade, 2);
  EXPECT_EQ(microphone.opened, 2);
  EXPECT_EQ(frameTimer.started, 2);
}

TEST_F(RecordingOverlayTest, HoldsNothingWhileHidden) {
  overlay->show();
  overlay->hide();
  EXPECT_EQ(stage.window, nullptr);
  EXPECT_EQ(microphone.tapsOpen, 0);
  EXPECT_EQ(frameTimer.running, 0);
}

TEST_F(RecordingOverlayTest, StaysUpWithBarsAtRestWhenTheMicrophoneCannotBeOpened) {
  microphone.failsAtOnce = "No such entity";
  overlay->show();
  time.runPosted();
  EXPECT_THAT(log.entries, ElementsAre(FakeLog::Entry{LogLevel::error, "audio",
                                                      "Audio engine failed: No such entity"}));
  EXPECT_EQ(frameTimer.running, 1);
  EXPECT_EQ(heightOfBarEight(), 1.5);
  time.advance(std::chrono::hours(1));
  EXPECT_EQ(microphone.opened, 1) << "nothing is retried";
}

TEST_F(RecordingOverlayTest, HidesWithoutAMicrophoneToClose) {
  microphone.failsAtOnce = "Connection refused";
  overlay->show();
  time.runPosted();
  diary.clear();
  overlay->hide();
  EXPECT_THAT(diary, ElementsAre("timer stopped", "window out"));
}

TEST_F(RecordingOverlayTest, ClosesAMicrophoneThatBreaksOffAndLetsTheBarsSink) {
  overlay->show();
  feed(sineAtBin(30));
  EXPECT_GT(heightOfBarEight(), 8);
  std::thread([this] { microphone.options.onFailure("Entity killed"); }).join();
  time.runPosted();
  EXPECT_EQ(microphone.tapsOpen, 0);
  EXPECT_EQ(log.entries.size(), 1U);
  for (int frame = 0; frame < 60; ++frame) nextFrame();
  EXPECT_EQ(heightOfBarEight(), 1.5);
  EXPECT_EQ(stage.windowsMade, 1);
}

TEST_F(RecordingOverlayTest, AnOldFailureDoesNotAffectTheNextShowing) {
  overlay->show();
  microphone.options.onFailure("Timeout");
  overlay->hide();
  overlay->show();
  time.runPosted();
  EXPECT_EQ(microphone.tapsOpen, 1);
  EXPECT_EQ(log.entries.size(), 1U);
}

TEST_F(RecordingOverlayTest, CallbacksDoNothingAfterTheOverlayIsGone) {
  overlay->show();
  const auto onBuffer = microphone.options.onBuffer;
  const auto onFailure = microphone.options.onFailure;
  const auto tick = frameTimer.task;
  overlay.reset();
  EXPECT_EQ(stage.window, nullptr);
  EXPECT_EQ(microphone.tapsOpen, 0);
  EXPECT_EQ(frameTimer.running, 0);

  onBuffer(BufferOver(sineAtBin(30)));
  onFailure("Entity killed");
  time.runPosted();
  tick();
  testing::RecordingCanvas canvas;
  stage.lastDraw(canvas);
  EXPECT_EQ(canvas.operations, "");
}

TEST_F(RecordingOverlayTest, WorksWithoutATransform) {
  vectorMath.hasTransform = false;
  overlay->show();
  feed(sineAtBin(30));
  EXPECT_GE(heightOfBarEight(), 1.5);
}

TEST(RecordingOverlayDeathTest, EndsTheProcessWithoutAnyScreen) {
  FakeOverlayPorts fakes;
  fakes.stage.mainScreen.reset();
  RecordingOverlay overlay(fakes.ports());
  EXPECT_DEATH(overlay.show(), "there is no screen");
}

}  // namespace
}  // namespace voxtrel
