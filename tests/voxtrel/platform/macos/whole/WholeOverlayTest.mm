#include <vector>

#import "rig_audio.h"
#include "support/Samples.h"
#include "support/macos/StartedEngines.h"
#import "support/macos/whole/WholeApplication.h"

namespace voxtrel::testing {
namespace {

class WholeOverlayTest : public WholeApplication {
 protected:
  /// The microphone hears one block of a tone, or of silence.
  static void feed(double amplitude) {
    const std::vector<float> samples = sineAtBin(30, amplitude);
    [RigAudio feed:StartedEngines::newest() samples:samples.data() count:samples.size()];
  }
  /// How green the middle of bar 8 is near the top of the pill.
  static double topOfBarEight() {
    return [pictureOf(overlay().contentView) colorAtX:49 y:5].greenComponent;
  }
  bool engineHears() const { return StartedEngines::newest().isRunning; }

  const StartedEngines started;
};

TEST_F(WholeOverlayTest, IsThereOnlyWhileTheEngineRecords) {
  launchToEngine();
  EXPECT_TRUE(overlay() == nil);
  record();
  EXPECT_TRUE(engineHears());
  EXPECT_EQ(overlay().level, NSFloatingWindowLevel);
  tell("print Processing 1.0s of audio");
  EXPECT_TRUE(runUntil([] { return overlay() == nil; }));
  EXPECT_FALSE(engineHears());
}

TEST_F(WholeOverlayTest, RaisesItsBarsWithAToneAndLowersThemInSilence) {
  launchToEngine();
  record();
  ASSERT_TRUE(runUntil([] { return topOfBarEight() < 0.2; }));
  feed(1);
  EXPECT_TRUE(runUntil([] { return topOfBarEight() > 0.4; }));
  feed(0);
  EXPECT_TRUE(runUntil([] { return topOfBarEight() < 0.2; }));
}

TEST_F(WholeOverlayTest, ComesBackWithEveryRecording) {
  launchToEngine();
  for (int recording = 0; recording < 5; ++recording) {
    record();
    tell("print Ready.");
    ASSERT_TRUE(runUntil([] { return overlay() == nil; })) << recording;
  }
  EXPECT_EQ(StartedEngines::all().size(), 5U);
}

TEST_F(WholeOverlayTest, StaysWithItsBarsAtRestWhereTheMicrophoneFails) {
  [RigAudio setStartError:[NSError errorWithDomain:@"test" code:1 userInfo:@{}]];
  launchToEngine();
  record();
  runFor(std::chrono::milliseconds(100));
  EXPECT_TRUE(overlay() != nil);
  EXPECT_LT(topOfBarEight(), 0.2);
}

TEST_F(WholeOverlayTest, GoesWithAnEngineThatCrashes) {
  launchToEngine();
  record();
  tell("exit 1");
  EXPECT_TRUE(runUntil([] { return overlay() == nil; }));
}

TEST_F(WholeOverlayTest, TakesNoFocusFromTheSettings) {
  launchToEngine();
  choose(kSettingsRow);
  ASSERT_TRUE(opens(@"Voxtrel Settings"));
  record();
  EXPECT_TRUE(window(@"Voxtrel Settings").isKeyWindow);
  EXPECT_FALSE(overlay().isKeyWindow);
}

}  // namespace
}  // namespace voxtrel::testing
