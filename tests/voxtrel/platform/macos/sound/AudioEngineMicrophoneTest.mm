#import <AVFoundation/AVFoundation.h>
#include <gtest/gtest.h>
#import <objc/runtime.h>

#include <memory>
#include <string>
#include <vector>

#import "rig_audio.h"
#include "support/macos/StartedEngines.h"
#include "voxtrel/platform/macos/sound/AudioEngineMicrophone.h"

namespace voxtrel::testing {
namespace {

class AudioEngineMicrophoneTest : public ::testing::Test {
 protected:
  ~AudioEngineMicrophoneTest() override {
    [RigAudio setStartError:nil];
    [RigAudio setHardwareRate:48000];
  }

  static AVAudioEngine* engine() { return StartedEngines::newest(); }
  static void feed(AVAudioEngine* engine, std::size_t frames) {
    const std::vector<float> samples(frames, 0.5F);
    [RigAudio feed:engine samples:samples.data() count:samples.size()];
  }

  std::unique_ptr<MicrophoneTap> open() {
    MicrophoneTapOptions options;
    options.bufferSizeFrames = 512;
    options.onBuffer = [this, owner = owner](const AudioBuffer& buffer) {
      lengths.push_back(buffer.frameLength);
      rateHz = buffer.sampleRateHz;
      firstSample = buffer.floatChannels.empty() ? 0 : buffer.floatChannels[0][0];
    };
    options.onFailure = [this](const std::string& description) { failures.push_back(description); };
    return microphone.openTap(std::move(options));
  }

  const StartedEngines started;
  AudioEngineMicrophone microphone;
  /// What the callbacks hold.
  const std::shared_ptr<int> owner = std::make_shared<int>(0);
  std::vector<std::size_t> lengths;
  std::vector<std::string> failures;
  double rateHz = 0;
  float firstSample = 0;
};

TEST_F(AudioEngineMicrophoneTest, DeliversBuffersOf512FramesAtTheDevicesRate) {
  [RigAudio setHardwareRate:44100];
  const auto tap = open();
  ASSERT_TRUE(tap);
  EXPECT_TRUE(engine().isRunning);
  feed(engine(), 1300);
  EXPECT_EQ(lengths, (std::vector<std::size_t>{512, 512, 276}));
  EXPECT_EQ(rateHz, 44100);
  EXPECT_EQ(firstSample, 0.5F);
  EXPECT_TRUE(failures.empty());
}

TEST_F(AudioEngineMicrophoneTest, ReportsARefusedStart) {
  [RigAudio setStartError:[NSError errorWithDomain:@"com.apple.coreaudio.avfaudio"
                                              code:2003329396
                                          userInfo:@{NSLocalizedDescriptionKey : @"no access"}]];
  EXPECT_FALSE(open());
  EXPECT_EQ(failures, std::vector<std::string>{"no access"});
}

TEST_F(AudioEngineMicrophoneTest, ReportsThatThereIsNoDevice) {
  [RigAudio setHardwareRate:0];
  EXPECT_FALSE(open());
  EXPECT_EQ(failures, std::vector<std::string>{"there is no input device"});
  EXPECT_TRUE(StartedEngines::all().empty());
}

BOOL startRaising(id, SEL, NSError**) {
  [NSException raise:@"com.apple.coreaudio.avfaudio" format:@"required condition is false"];
  return NO;
}

TEST_F(AudioEngineMicrophoneTest, ReportsWhatTheEngineRaises) {
  const Method method =
      class_getInstanceMethod(AVAudioEngine.class, @selector(startAndReturnError:));
  const IMP before = method_setImplementation(method, reinterpret_cast<IMP>(startRaising));
  EXPECT_FALSE(open());
  method_setImplementation(method, before);
  EXPECT_EQ(failures, std::vector<std::string>{"required condition is false"});
}

TEST_F(AudioEngineMicrophoneTest, ReportsOnceThatTheDeviceHasChangedAndDeliversNothingMore) {
  const auto tap = open();
  for (int times = 0; times < 2; ++times) {
    [NSNotificationCenter.defaultCenter
        postNotificationName:AVAudioEngineConfigurationChangeNotification
                      object:engine()];
  }
  EXPECT_EQ(failures, std::vector<std::string>{"the input device has changed"});
  feed(engine(), 512);
  EXPECT_TRUE(lengths.empty());
}

TEST_F(AudioEngineMicrophoneTest, IgnoresTheChangesOfOtherEngines) {
  const auto tap = open();
  [NSNotificationCenter.defaultCenter
      postNotificationName:AVAudioEngineConfigurationChangeNotification
                    object:[[AVAudioEngine alloc] init]];
  EXPECT_TRUE(failures.empty());
}

TEST_F(AudioEngineMicrophoneTest, EndsTheCaptureWithItsOwner) {
  auto tap = open();
  AVAudioEngine* const held = engine();
  tap.reset();
  EXPECT_FALSE(held.isRunning);
  NSError* error = nil;
  EXPECT_TRUE([held startAndReturnError:&error]);
  feed(held, 512);
  EXPECT_TRUE(lengths.empty()) << "the tap is still installed";
  [NSNotificationCenter.defaultCenter
      postNotificationName:AVAudioEngineConfigurationChangeNotification
                    object:held];
  EXPECT_TRUE(failures.empty());
}

TEST_F(AudioEngineMicrophoneTest, OpensSeveralTimes) {
  for (int times = 0; times < 3; ++times) {
    const auto tap = open();
    ASSERT_TRUE(tap);
    feed(engine(), 512);
  }
  EXPECT_EQ(lengths.size(), 3U);
}

TEST_F(AudioEngineMicrophoneTest, LeavesNothingBehindInAThousandRounds) {
  constexpr std::size_t kRounds = 1000;
  for (std::size_t round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      const auto tap = open();
      ASSERT_TRUE(tap);
    }
  }
  EXPECT_EQ(StartedEngines::all().size(), kRounds);
  EXPECT_EQ(countAlive(StartedEngines::all()), 0U);
  EXPECT_EQ(owner.use_count(), 1);
}

TEST_F(AudioEngineMicrophoneTest, LeavesNothingBehindInAThousandRefusals) {
  [RigAudio setStartError:[NSError errorWithDomain:@"test" code:1 userInfo:@{}]];
  constexpr std::size_t kRounds = 1000;
  for (std::size_t round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      EXPECT_FALSE(open());
    }
  }
  EXPECT_EQ(failures.size(), kRounds);
  EXPECT_EQ(StartedEngines::all().size(), kRounds);
  EXPECT_EQ(countAlive(StartedEngines::all()), 0U);
  EXPECT_EQ(owner.use_count(), 1);
}

}  // namespace
}  // namespace voxtrel::testing
