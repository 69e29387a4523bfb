#include "quillback/app/TakeCutter.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace voxtrel::quillback {

void TakeCutter::add(std::span<const std::int16_t> samples) {
  while (!samples.empty()) {
    // Only now that more follows: a take may be just this long.
    if (waiting_.size() == kSearchedSamples) cut();
    const std::size_t unsearched = kMaxSamples - kSearchedSamples - passed_;
    if (unsearched > 0) {
      samples = pass(samples, unsearched);
      continue;
    }
    const auto some = samples.first(std::min(samples.size(), kSearchedSamples - waiting_.size()));
    waiting_.insert(waiting_.end(), some.begin(), some.end());
    samples = samples.subspan(some.size());
  }
}

/// Shows the listener at most `count` samples; returns the others.
std::span<const std::int16_t> TakeCutter::pass(std::span<const std::int16_t> samples,
                                               std::size_t count) {
  const auto some = samples.first(std::min(samples.size(), count));
  listener_.onSamples(some);
  passed_ += some.size();
  return samples.subspan(some.size());
}

void TakeCutter::cut() {
  const std::vector<std::int16_t> searched = std::exchange(waiting_, {});
  const auto all = std::span<const std::int16_t>(searched);
  const std::size_t end = quietestMoment(all);
  listener_.onSamples(all.first(end));
  listener_.onCut();
  passed_ = 0;
  pass(all.subspan(end), all.size() - end);
}

void TakeCutter::finish() {
  if (!waiting_.empty()) listener_.onSamples(waiting_);
  waiting_.clear();
  passed_ = 0;
}

std::size_t quietestMoment(std::span<const std::int16_t> samples) {
  constexpr std::size_t kStep = kSampleRateHz / 20;
  constexpr std::size_t kSteps = 8;  // 0.4 s
  std::vector<std::int64_t> loudness;
  for (auto rest = samples; rest.size() >= kStep; rest = rest.subspan(kStep)) {
    const auto step = rest.first(kStep);
    loudness.push_back(std::inner_product(step.begin(), step.end(), step.begin(), std::int64_t{0}));
  }
  std::size_t best = loudness.size() / 2;
  std::int64_t least = -1;
  for (std::size_t at = 0; at + kSteps <= loudness.size(); ++at) {
    const auto first = std::next(loudness.begin(), static_cast<std::ptrdiff_t>(at));
    const std::int64_t sum = std::accumulate(first, std::next(first, kSteps), std::int64_t{0});
    if (least >= 0 && sum >= least) continue;
    least = sum;
    best = at + kSteps / 2;
  }
  return best * kStep;
}

}  // namespace voxtrel::quillback
