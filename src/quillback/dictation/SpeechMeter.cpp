#include "quillback/dictation/SpeechMeter.h"

#include <utility>

namespace voxtrel::quillback {

void SpeechMeter::feed(std::span<const std::int16_t> samples) {
  samples_ += samples.size();
  for (const std::int64_t sample : samples) {
    sum_ += sample;
    sumOfSquares_ += sample * sample;
    if (++blockFilled_ == kBlockSamples) endBlock();
  }
}

void SpeechMeter::endBlock() {
  constexpr auto kCount = static_cast<double>(kBlockSamples);
  const double mean = static_cast<double>(std::exchange(sum_, 0)) / kCount;
  const double power = static_cast<double>(std::exchange(sumOfSquares_, 0)) / kCount - mean * mean;
  blockFilled_ = 0;
  if (power >= kMinLevel * kMinLevel) isLoud_ = true;
}

}  // namespace voxtrel::quillback
