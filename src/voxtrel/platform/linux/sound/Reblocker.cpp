#include "voxtrel/platform/linux/sound/Reblocker.h"

#include <algorithm>

namespace voxtrel {

void Reblocker::feed(std::span<const float> samples, const OnBlock& onBlock) {
  if (samples.size() == blockFrames_) waiting_.clear();
  while (!samples.empty()) {
    if (waiting_.empty() && samples.size() >= blockFrames_) {
      onBlock(samples.first(blockFrames_));
      samples = samples.subspan(blockFrames_);
      continue;
    }
    const std::size_t count = std::min(blockFrames_ - waiting_.size(), samples.size());
    const auto head = samples.first(count);
    waiting_.insert(waiting_.end(), head.begin(), head.end());
    samples = samples.subspan(count);
    if (waiting_.size() < blockFrames_) return;
    onBlock(waiting_);
    waiting_.clear();
  }
}

}  // namespace voxtrel
