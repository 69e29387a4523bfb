#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace voxtrel::quillback {

/// Tells a silent recording from one that may hold speech. A recording is silent when no 50 ms block,
/// minus its mean, reaches kMinLevel, which is 60 dB below a full-scale square wave. A whisper into a
/// microphone with low gain is 10 dB louder; a muted microphone gives zeros. Louder noise is left to
/// the recogniser.
/// Thread: one.
class SpeechMeter {
 public:
  static constexpr double kMinLevel = 32.768;  ///< root mean square, in sample steps
  static constexpr std::size_t kBlockSamples = 800;

  void feed(std::span<const std::int16_t> samples);
  /// How many samples were fed.
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
