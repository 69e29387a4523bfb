#include "voxtrel/platform/linux/sound/PulseMicrophone.h"

#include <array>
#include <utility>

#include "common/pulse/RecordingStream.h"
#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/linux/sound/Reblocker.h"

namespace voxtrel {
namespace {

/// A recording cut into buffers of the size that the tap's owner asked for.
class PulseTap final : public MicrophoneTap {
 public:
  explicit PulseTap(MicrophoneTapOptions options)
      : onBuffer_(std::move(options.onBuffer)),
        reblocker_(options.bufferSizeFrames),
        stream_(recordingOptions(options.bufferSizeFrames, std::move(options.onFailure))) {}

 private:
  RecordingOptions recordingOptions(std::size_t bufferSizeFrames,
                                    std::function<void(std::string)> onFailure) {
    RecordingOptions options;
    options.applicationName = "Voxtrel";
    options.applicationId = kBundleIdentifier;
    options.streamName = "Recording overlay";
    options.keepsSourceRate = true;
    options.takesFirstChannel = true;
    // One frame more than a block: the server rounds down to microseconds and then to frames, and one
    // frame too few would hold each block back until the next fragment.
    options.fragmentFrames = static_cast<std::uint32_t>(bufferSizeFrames + 1);
    options.onSamples = [this](std::span<const float> samples, int rateHz) {
      feed(samples, rateHz);
    };
    options.onFailure = [onFailure = std::move(onFailure)](const RecordingFailure& failure) {
      onFailure(failure.description);
    };
    return options;
  }

  void feed(std::span<const float> samples, int rateHz) {
    reblocker_.feed(samples, [&](std::span<const float> block) {
      const std::array<const float*, 1> channels{block.data()};
      onBuffer_({channels, block.size(), static_cast<double>(rateHz)});
    });
  }

  const std::function<void(const AudioBuffer& buffer)> onBuffer_;
  Reblocker reblocker_;
  RecordingStream stream_;  // last: its thread uses the members above
};

}  // namespace

std::unique_ptr<MicrophoneTap> PulseMicrophone::openTap(MicrophoneTapOptions options) {
  return std::make_unique<PulseTap>(std::move(options));
}

}  // namespace voxtrel
