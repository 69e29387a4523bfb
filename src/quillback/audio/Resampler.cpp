#include "quillback/audio/Resampler.h"

#include <samplerate.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kBlockSamples = 4096;
/// Even where there is no input, the library does nothing without an address.
constexpr float kNothing = 0;

std::int16_t asInteger(float sample) {
  return static_cast<std::int16_t>(std::clamp(std::lround(sample * 32768.0F), -32768L, 32767L));
}

}  // namespace

void Resampler::Free::operator()(SRC_STATE_tag* converter) const {
  src_delete(converter);
}

Resampler::Resampler(int rateHz)
    : ratio_(static_cast<double>(kSampleRateHz) / rateHz), block_(kBlockSamples) {
  if (rateHz != kSampleRateHz) converter_.reset(src_new(SRC_SINC_MEDIUM_QUALITY, 1, &error_));
}

Resampler::Converted Resampler::convert(std::span<const float> samples, bool isLast) {
  output_.clear();
  if (error_ != 0) return tl::make_unexpected(std::string(src_strerror(error_)));
  if (!converter_) {
    std::ranges::transform(samples, std::back_inserter(output_), asInteger);
    return std::span<const std::int16_t>(output_);
  }
  SRC_DATA job{};
  job.src_ratio = ratio_;
  job.end_of_input = isLast ? 1 : 0;
  do {
    job.data_in = samples.empty() ? &kNothing : samples.data();
    job.input_frames = static_cast<long>(samples.size());
    job.data_out = block_.data();
    job.output_frames = static_cast<long>(block_.size());
    error_ = src_process(converter_.get(), &job);
    if (error_ != 0) return tl::make_unexpected(std::string(src_strerror(error_)));
    samples = samples.subspan(static_cast<std::size_t>(job.input_frames_used));
    const auto made = std::span(block_).first(static_cast<std::size_t>(job.output_frames_gen));
    std::ranges::transform(made, std::back_inserter(output_), asInteger);
  } while (!samples.empty() || job.output_frames_gen > 0);
  return std::span<const std::int16_t>(output_);
}

}  // namespace voxtrel::quillback
