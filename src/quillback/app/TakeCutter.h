#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {

/// Divides long sound into takes as a dictation has them, at most five minutes each: a recogniser's process
/// keeps the whole take. It divides at the quietest moment of a take's last 30 seconds.
/// Thread: one.
class TakeCutter {
 public:
  static constexpr std::size_t kMaxSamples = std::size_t{300} * kSampleRateHz;
  static constexpr std::size_t kSearchedSamples = std::size_t{30} * kSampleRateHz;

  struct Listener {
    std::function<void(std::span<const std::int16_t> samples)> onSamples;
    std::function<void()> onCut;  ///< a take ends here; more samples follow
  };

  explicit TakeCutter(Listener listener) : listener_(std::move(listener)) {}

  void add(std::span<const std::int16_t> samples);
  /// Called after the last samples.
  void finish();

 private:
  void cut();
  std::span<const std::int16_t> pass(std::span<const std::int16_t> samples, std::size_t count);

  Listener listener_;
  std::size_t passed_ = 0;             ///< samples of the running take
  std::vector<std::int16_t> waiting_;  ///< samples behind them, in which the end is searched
};

/// Where in `samples` it is quietest for 0.4 seconds: the middle of that.
std::size_t quietestMoment(std::span<const std::int16_t> samples);

}  // namespace voxtrel::quillback
