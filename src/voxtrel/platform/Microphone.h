#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace voxtrel {

/// One delivery of a microphone; valid during the call that hands it over.
struct AudioBuffer {
  std::span<const float* const> floatChannels;  ///< empty if the device has no float samples
  std::size_t frameLength = 0;                  ///< samples in each channel
  double sampleRateHz = 0;
};

/// An open capture. Destroying it ends the capture; no callback runs after that.
/// Thread: the one that opened it.
class MicrophoneTap {
 public:
  virtual ~MicrophoneTap() = default;
};

struct MicrophoneTapOptions {
  std::size_t bufferSizeFrames = 512;  ///< frames in each buffer
  /// Called on the capture's own thread.
  std::function<void(const AudioBuffer& buffer)> onBuffer;
  /// Called at most once, on any thread, if the capture cannot start or breaks off; possibly before
  /// `openTap` returns. No buffers follow.
  std::function<void(std::string description)> onFailure;
};

/// The user's default microphone.
/// Thread: the main thread.
class Microphone {
 public:
  virtual ~Microphone() = default;

  /// Starts a capture at the device's own sample rate, and waits for the sound system only as long as
  /// the platform makes it. The capture stays with its device when the default changes.
  /// Fails by: `onFailure`; may then return null.
  [[nodiscard]] virtual std::unique_ptr<MicrophoneTap> openTap(MicrophoneTapOptions options) = 0;
};

}  // namespace voxtrel
