#include "quillback/audio/Resampler.h"

#include <samplerate.h>

#include <algorithm>
#include <cmath>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

std::vector<std::int16_t> asIntegers(std::span<const float> samples) {
  std::vector<std::int16_t> integers(samples.size());
  std::ranges::transform(samples, integers.begin(), [](float sample) {
    return static_cast<std::int16_t>(std::clamp(std::lround(sample * 32768.0F), -32768L, 32767L));
  });
  return integers;
}

}  // namespace

std::vector<std::int16_t> resampled(std::span<const float> samples, int rateHz) {
  if (rateHz == kSampleRateHz) return asIntegers(samples);
  const double ratio = static_cast<double>(kSampleRateHz) / rateHz;
  std::vector<float> output(
      static_cast<std::size_t>(std::ceil(static_cast<double>(samples.size()) * ratio)) + 1);
  SRC_DATA job{};
  job.data_in = samples.data();
  job.input_frames = static_cast<long>(samples.size());
  job.data_out = output.data();
  job.output_frames = static_cast<long>(output.size());
  job.src_ratio = ratio;
  if (src_simple(&job, SRC_SINC_MEDIUM_QUALITY, 1) != 0) return {};
  return asIntegers(std::span(output).first(static_cast<std::size_t>(job.output_frames_gen)));
}

}  // namespace voxtrel::quillback
