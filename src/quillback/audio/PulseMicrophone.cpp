#include "quillback/audio/PulseMicrophone.h"

#include <utility>

#include "common/pulse/RecordingStream.h"

namespace voxtrel::quillback {
namespace {

class PulseCapture final : public Capture {
 public:
  explicit PulseCapture(RecordingOptions options) : stream_(std::move(options)) {}

 private:
  RecordingStream stream_;
};

std::string explain(const RecordingFailure& failure) {
  switch (failure.reason) {
    case RecordingFailure::Reason::noServer:
      return "there is no sound server";
    case RecordingFailure::Reason::noSource:
      return "there is no microphone";
    case RecordingFailure::Reason::stalled:
      return "nothing comes from the microphone";
    case RecordingFailure::Reason::noMemory:
      return "no memory";
    case RecordingFailure::Reason::noThread:
      return "no thread can be started";
    case RecordingFailure::Reason::other:
      break;
  }
  return failure.description;
}

}  // namespace

std::unique_ptr<Capture> PulseMicrophone::open(Listener listener) {
  RecordingOptions options;
  options.applicationName = "quillback";
  options.streamName = "Dictation";
  options.rateHz = kSampleRateHz;
  // 10 ms, so that the end of the speech arrives soon after it was spoken.
  options.fragmentFrames = kSampleRateHz / 100;
  options.onSamples = [onSamples = std::move(listener.onSamples)](
                          std::span<const std::int16_t> samples, int) { onSamples(samples); };
  options.onFailure = [onFailure = std::move(listener.onFailure)](const RecordingFailure& failure) {
    onFailure(explain(failure));
  };
  return std::make_unique<PulseCapture>(std::move(options));
}

}  // namespace voxtrel::quillback
