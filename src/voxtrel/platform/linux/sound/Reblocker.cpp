#include "voxtrel/platform/linux/sound/Reblocker.h"

#include <algorithm>

namespace voxtrel {

void Reblocker::push(std::span<const float> samples, const TakeBlock& takeBlock) {
  if (samples.size() == blockFrames_) waiting_.clear();
  while (!samples.empty()) {
    if (waiting_.empty() && samples.size() >= blockFrames_) {
      takeBlock(samples.first(blockFrames_));
      samples = samples.subspan(blockFrames_);
      continue;
    }
    const std::size_t count = std::min(blockFrames_ - waiting_.size(), samples.size());
    const auto taken = samples.first(count);
    waiting_.insert(waiting_.end(), taken.begin(), taken.end());
    samples = samples.subspan(count);
    if (waiting_.size() < blockFrames_) return;
    takeBlock(waiting_);
    waiting_.clear();
  }
}

}  // namespace voxtrel
