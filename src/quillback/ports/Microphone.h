#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace voxtrel::quillback {

/// Samples per second of everything that is captured and recognised; one channel.
inline constexpr int kSampleRateHz = 16000;

/// An open microphone; destroying it closes it, after which nothing is reported.
/// Thread: the loop's.
class Capture {
 public:
  virtual ~Capture() = default;
};

/// The microphone, which nobody uses unless a capture is open.
/// Thread: the loop's.
class Microphone {
 public:
  struct Listener {
    /// Mono samples at kSampleRateHz, oldest first; on a thread of the microphone's own.
    std::function<void(std::span<const std::int16_t> samples)> onSamples;
    /// On the loop's thread, at most once; nothing is captured any more.
    std::function<void(const std::string& why)> onFailure;
  };

  virtual ~Microphone() = default;

  /// Returns at once; what goes wrong is reported later.
  [[nodiscard]] virtual std::unique_ptr<Capture> open(Listener listener) = 0;
};

}  // namespace voxtrel::quillback
