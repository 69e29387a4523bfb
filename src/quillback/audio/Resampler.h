#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace voxtrel::quillback {

/// The sound as a recogniser takes it: 16 bits at kSampleRateHz, with higher frequencies filtered out.
/// `rateHz` is from kMinRateHz to kMaxRateHz.
/// Fails by: no samples, if memory runs out.
std::vector<std::int16_t> resampled(std::span<const float> samples, int rateHz);

}  // namespace voxtrel::quillback
