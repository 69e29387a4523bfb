#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#import "rig_audio.h"
#include "support/FakePorts.h"
#include "support/ManualTime.h"
#include "support/Samples.h"
#include "support/macos/RunLoop.h"
#include "support/macos/StartedEngines.h"
#include "voxtrel/overlay/RecordingOverlay.h"
#include "voxtrel/platform/macos/overlay/AppKitOverlayStage.h"
#include "voxtrel/platform/macos/sound/AudioEngineMicrophone.h"
#include "voxtrel/platform/macos/vdsp/AccelerateMath.h"

namespace voxtrel::testing {
namespace {

/// Frames that come when the test says so.
struct ManualFrames : FrameTimer {
  Subscription everyFrame(std::chrono::duration<double>, std::function<void()> newTask) override {
    task = std::move(newTask);
    return Subscription([this] { task = nullptr; });
  }
  std::function<void()> task;
};

/// The overlay with the macOS window, capture and vector steps.
class NativeOverlayTest : public ::testing::Test {
 protected:
  ~NativeOverlayTest() override { [RigAudio setStartError:nil]; }

  static NSWindow* native() { return visibleWindow(@"VoxtrelOverlayWindow"); }

  void feedTone() {
    const std::vector<float> samples = sineAtBin(30);
    [RigAudio feed:StartedEngines::newest() samples:samples.data() count:samples.size()];
  }

  /// The share of red, green and blue in the middle of bar 8, near the top of the pill.
  NSColor* topOfBarEight(int frames) {
    NSBitmapImageRep* picture = nil;
    for (int frame = 0; frame < frames; ++frame) {
      frameTimer.task();
      picture = pictureOf(native().contentView);
    }
    return [picture colorAtX:49 y:5];
  }

  const StartedEngines started;
  AppKitOverlayStage stage;
  AudioEngineMicrophone microphone;
  ManualFrames frameTimer;
  ManualTime time;
  FakeLog log;
  AccelerateMath math;
  RecordingOverlay overlay{{.stage = stage,
                            .microphone = microphone,
                            .frameTimer = frameTimer,
                            .mainLoop = time,
                            .log = log,
                            .vectorMath = math}};
};

TEST_F(NativeOverlayTest, StandsAtTheBottomOfTheScreenWhileItShows) {
  overlay.show();
  ASSERT_TRUE(native());
  const NSRect screen = NSScreen.mainScreen.frame;
  EXPECT_TRUE(NSEqualRects(native().frame, NSMakeRect(NSMidX(screen) - 45, 90, 90, 21)));
  EXPECT_TRUE(StartedEngines::newest().isRunning);
  overlay.hide();
  EXPECT_FALSE(native());
  EXPECT_FALSE(StartedEngines::newest().isRunning);
}

TEST_F(NativeOverlayTest, RaisesABarWithATone) {
  overlay.show();
  EXPECT_LT(topOfBarEight(3).greenComponent, 0.2);
  feedTone();
  EXPECT_GT(topOfBarEight(15).greenComponent, 0.4);
}

TEST_F(NativeOverlayTest, StaysWithItsBarsAtRestIfTheCaptureIsRefused) {
  [RigAudio setStartError:[NSError errorWithDomain:@"test"
                                              code:1
                                          userInfo:@{NSLocalizedDescriptionKey : @"no access"}]];
  overlay.show();
  time.runPosted();
  EXPECT_TRUE(native());
  EXPECT_LT(topOfBarEight(3).greenComponent, 0.2);
  ASSERT_EQ(log.entries.size(), 1U);
  EXPECT_EQ(log.entries[0].message, "Audio engine failed: no access");
  overlay.hide();
  EXPECT_FALSE(native());
}

TEST_F(NativeOverlayTest, LeavesNothingBehindInAThousandRounds) {
  constexpr int kRounds = 1000;
  std::vector<WeakObject> natives;
  for (int round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      overlay.show();
      natives.push_back({native()});
      overlay.hide();
    }
  }
  EXPECT_TRUE(runUntil([&] { return countAlive(natives) == 0; })) << countAlive(natives);
  EXPECT_EQ(StartedEngines::all().size(), static_cast<std::size_t>(kRounds));
  EXPECT_EQ(countAlive(StartedEngines::all()), 0U);
}

}  // namespace
}  // namespace voxtrel::testing
