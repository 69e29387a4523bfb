#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace voxtrel::quillback {

/// Samples per second of everything that is captured and recognised; one channel.
inline constexpr int kSampleRateHz = 16000;

/// An open microphone. Destroying it closes the microphone; no callback runs after that.
/// Thread: the loop's.
class Capture {
 public:
  virtual ~Capture() = default;
};

/// The microphone; it is closed unless a capture is open.
/// Thread: the loop's.
class Microphone {
 public:
  struct Listener {
    /// Mono samples at kSampleRateHz, oldest first; on the microphone's own thread.
    std::function<void(std::span<const std::int16_t> samples)> onSamples;
    /// Called at most once, on the microphone's own thread or from `open`; no samples follow. Must
    /// not destroy the capture.
    std::function<void(const std::string& why)> onFailure;
  };

  virtual ~Microphone() = default;

  /// Returns at once.
  /// Fails by: `onFailure`.
  [[nodiscard]] virtual std::unique_ptr<Capture> open(Listener listener) = 0;
};

}  // namespace voxtrel::quillback
