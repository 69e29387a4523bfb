#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace voxtrel {

/// What a microphone delivers at a time; valid during the call that hands it over.
struct AudioBuffer {
  std::span<const float* const> floatChannels;  ///< empty if the device gives no float samples
  std::size_t frameLength = 0;                  ///< samples in each channel
  double sampleRateHz = 0;
};

/// A capture that runs until this is destroyed; afterwards none of its callbacks is called, nor is
/// one still running.
/// Thread: the one that opened it.
class MicrophoneTap {
 public:
  virtual ~MicrophoneTap() = default;
};

struct MicrophoneTapOptions {
  std::size_t bufferSizeFrames = 512;
  /// Called on the capture's own thread with each buffer.
  std::function<void(const AudioBuffer& buffer)> onBuffer;
  /// Called once, on any thread, if the capture cannot start or ends by itself; perhaps before
  /// `openTap` returns. Nothing is delivered afterwards.
  std::function<void(std::string description)> onFailure;
};

/// The microphone that the user has chosen as the default.
/// Thread: the main thread.
class Microphone {
 public:
  virtual ~Microphone() = default;

  /// Begins to open a capture at the device's own sample rate; does not wait for the sound system.
  /// A capture stays with the device that it began with.
  /// Fails by: `onFailure`; may then return null.
  [[nodiscard]] virtual std::unique_ptr<MicrophoneTap> openTap(MicrophoneTapOptions options) = 0;
};

}  // namespace voxtrel
