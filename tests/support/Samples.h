#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <random>
#include <span>
#include <vector>

#include "voxtrel/platform/Microphone.h"

namespace voxtrel::testing {

inline constexpr std::size_t kBlockFrames = 512;

/// A sine at `bin`: 512 samples hold `bin` periods.
inline std::vector<float> sineAtBin(double bin, double amplitude = 1.0, double phase = 0.3,
                                    std::size_t frames = kBlockFrames) {
  std::vector<float> samples(frames);
  for (std::size_t n = 0; n < frames; ++n) {
    const double turns = bin * static_cast<double>(n) / static_cast<double>(kBlockFrames);
    samples[n] = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * turns + phase));
  }
  return samples;
}

/// Uniform noise in -amplitude ... amplitude; equal seeds give equal noise.
inline std::vector<float> noise(unsigned seed, double amplitude = 1.0,
                                std::size_t frames = kBlockFrames) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> distribution(-amplitude, amplitude);
  std::vector<float> samples(frames);
  for (float& sample : samples) sample = static_cast<float>(distribution(generator));
  return samples;
}

/// One sample of 1 at `position`, the others 0.
inline std::vector<float> impulse(std::size_t position) {
  std::vector<float> samples(kBlockFrames, 0.0F);
  samples.at(position) = 1.0F;
  return samples;
}

/// A buffer of one or more channels over samples that the caller owns.
class BufferOver {
 public:
  explicit BufferOver(std::span<const float> samples, double sampleRateHz = 48000.0)
      : BufferOver({samples.data()}, samples.size(), sampleRateHz) {}
  BufferOver(std::vector<const float*> channels, std::size_t frames, double sampleRateHz)
      : channels_(std::move(channels)), frames_(frames), sampleRateHz_(sampleRateHz) {}

  operator AudioBuffer() const { return {channels_, frames_, sampleRateHz_}; }

 private:
  std::vector<const float*> channels_;
  std::size_t frames_;
  double sampleRateHz_;
};

}  // namespace voxtrel::testing
