#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <tl/expected.hpp>

struct SRC_STATE_tag;  // the library's

namespace voxtrel::quillback {

/// Brings sound to what a recogniser takes, block by block: 16 bits at kSampleRateHz, with higher
/// frequencies filtered out.
/// Thread: one.  Owns: the library's converter.
/// Fails by: what the library says.
class Resampler {
 public:
  /// `rateHz` is from kMinRateHz to kMaxRateHz.
  explicit Resampler(int rateHz);

  using Converted = tl::expected<std::span<const std::int16_t>, std::string>;
  /// What `samples` give, until the next call; perhaps nothing yet.
  Converted add(std::span<const float> samples) { return convert(samples, false); }
  /// What is left after the last samples.
  Converted finish() { return convert({}, true); }

 private:
  struct Free {
    void operator()(SRC_STATE_tag* converter) const;
  };

  Converted convert(std::span<const float> samples, bool isLast);

  const double ratio_;
  int error_ = 0;
  std::unique_ptr<SRC_STATE_tag, Free> converter_;  ///< null if the rate is right already
  std::vector<float> block_;
  std::vector<std::int16_t> output_;
};

}  // namespace voxtrel::quillback
