#include "voxtrel/overlay/BarSmoothing.h"

#include <algorithm>

namespace voxtrel {

BandLevels smoothedTowards(const BandLevels& energy, const BandLevels& smoothed) {
  BandLevels next{};
  for (std::size_t i = 0; i < next.size(); ++i) {
    const float difference = energy[i] - smoothed[i];
    const float share = difference > 0 ? 0.55F : 0.15F;
    // In this order a level that is no number becomes 1 and does not stay.
    next[i] = std::max(0.0F, std::min(1.0F, smoothed[i] + difference * share));
  }
  return next;
}

}  // namespace voxtrel
