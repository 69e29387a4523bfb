#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace voxtrel::quillback {

/// Tells silence from a recording that may hold speech. A recording is silent when none of its 50 ms
/// blocks, its mean taken off, is as loud as kFaintestLevel: -60 dB below a full-scale square wave.
/// Whispering into a microphone with its gain turned down is 10 dB louder, a muted microphone all
/// zeros; whether noise above that holds words is for the recogniser to say.
/// Thread: one.
class SpeechMeter {
 public:
  static constexpr double kFaintestLevel = 32.768;  ///< root mean square, in sample steps
  static constexpr std::size_t kBlockSamples = 800;

  void hear(std::span<const std::int16_t> samples);
  /// Samples heard.
  std::size_t samples() const { return samples_; }
  bool isSilence() const { return !isLoud_; }

 private:
  void endBlock();

  std::size_t samples_ = 0;
  std::size_t blockFilled_ = 0;
  std::int64_t sum_ = 0;
  std::int64_t sumOfSquares_ = 0;
  bool isLoud_ = false;
};

}  // namespace voxtrel::quillback
