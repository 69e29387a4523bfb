#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace voxtrel::quillback {

/// The same sound as samples that a recogniser takes: 16 bits at kSampleRateHz. What was beyond their
/// highest frequency is filtered away. `rateHz` is between kLowestRateHz and kHighestRateHz.
/// Empty where the library refuses, which only a lack of memory makes it do.
std::vector<std::int16_t> resampled(std::span<const float> samples, int rateHz);

}  // namespace voxtrel::quillback
