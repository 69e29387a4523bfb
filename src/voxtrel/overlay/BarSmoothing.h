#pragma once

#include "voxtrel/overlay/SpectrumBands.h"

namespace voxtrel {

/// What the bars show one frame after `smoothed`: 55 % of the way up towards a higher energy, 15 %
/// of the way down towards a lower one, within 0 ... 1.
BandLevels smoothedTowards(const BandLevels& energy, const BandLevels& smoothed);

}  // namespace voxtrel
