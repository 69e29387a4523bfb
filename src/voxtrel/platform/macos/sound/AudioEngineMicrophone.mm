#include "voxtrel/platform/macos/sound/AudioEngineMicrophone.h"

#import <AVFoundation/AVFoundation.h>

#include <optional>
#include <string>
#include <utility>

#include "voxtrel/platform/macos/foundation/Strings.h"
#include "voxtrel/platform/macos/sound/TapGate.h"

namespace voxtrel {
namespace {

constexpr AVAudioNodeBus kBus = 0;

void pass(AVAudioPCMBuffer* buffer, TapGate& gate) {
  AudioBuffer passed;
  if (buffer.floatChannelData != nullptr) {
    passed.floatChannels = {buffer.floatChannelData, buffer.format.channelCount};
  }
  passed.frameLength = buffer.frameLength;
  passed.sampleRateHz = buffer.format.sampleRate;
  gate.pass(passed);
}

/// Empty if it worked.
std::optional<std::string> start(AVAudioEngine* engine, std::size_t bufferSizeFrames,
                                 const std::shared_ptr<TapGate>& gate) {
  const std::shared_ptr<TapGate> shared = gate;  // a block would keep only the reference
  AVAudioInputNode* const node = engine.inputNode;
  AVAudioFormat* const format = [node outputFormatForBus:kBus];
  if (format.sampleRate <= 0 || format.channelCount == 0) return "there is no input device";
  [node installTapOnBus:kBus
             bufferSize:static_cast<AVAudioFrameCount>(bufferSizeFrames)
                 format:format
                  block:^(AVAudioPCMBuffer* buffer, AVAudioTime*) {
                    pass(buffer, *shared);
                  }];
  NSError* error = nil;
  if ([engine startAndReturnError:&error]) return {};
  [node removeTapOnBus:kBus];
  return describe(error);
}

/// AVAudioEngine raises where its device does not fit.
std::optional<std::string> startCaught(AVAudioEngine* engine, std::size_t bufferSizeFrames,
                                       const std::shared_ptr<TapGate>& gate) {
  @try {
    return start(engine, bufferSizeFrames, gate);
  } @catch (NSException* exception) {
    return toString(exception.reason);
  }
}

/// A running engine with a tap on its input.
/// Thread: the main thread.  Owns: the engine and a share of the gate, which its blocks share.
class AudioEngineTap final : public MicrophoneTap {
 public:
  AudioEngineTap(AVAudioEngine* engine, std::shared_ptr<TapGate> gate)
      : engine_(engine), gate_(std::move(gate)), observer_(observe(engine, gate_)) {}
  AudioEngineTap(const AudioEngineTap&) = delete;
  AudioEngineTap& operator=(const AudioEngineTap&) = delete;

  ~AudioEngineTap() override {
    [NSNotificationCenter.defaultCenter removeObserver:observer_];
    [engine_.inputNode removeTapOnBus:kBus];
    [engine_ stop];
    gate_->close();
  }

 private:
  /// The engine stops by itself when its device changes.
  static id observe(AVAudioEngine* engine, const std::shared_ptr<TapGate>& gate) {
    const std::shared_ptr<TapGate> shared = gate;
    return [NSNotificationCenter.defaultCenter
        addObserverForName:AVAudioEngineConfigurationChangeNotification
                    object:engine
                     queue:nil
                usingBlock:^(NSNotification*) {
                  shared->fail("the input device has changed");
                }];
  }

  AVAudioEngine* const engine_;
  const std::shared_ptr<TapGate> gate_;
  const id observer_;
};

}  // namespace

std::unique_ptr<MicrophoneTap> AudioEngineMicrophone::openTap(MicrophoneTapOptions options) {
  const std::size_t bufferSizeFrames = options.bufferSizeFrames;
  const auto gate = std::make_shared<TapGate>(std::move(options));
  auto* const engine = [[AVAudioEngine alloc] init];
  if (auto reason = startCaught(engine, bufferSizeFrames, gate)) {
    gate->fail(std::move(*reason));
    return nullptr;
  }
  return std::make_unique<AudioEngineTap>(engine, gate);
}

}  // namespace voxtrel
