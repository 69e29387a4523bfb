#pragma once

#include "support/overlay_driver/RealOverlay.h"

namespace bench {

/// From show() to the first frame on the screen, beside an empty window of the same kind.
void benchFirstFrame(voxtrel::testing::RealOverlay& ours);

/// From show() to the first block of sound, beside a bare recording.
void benchFirstBlock(voxtrel::testing::RealOverlay& ours);

/// From samples written to `sink`, whose monitor is the default source, to new levels of the bars,
/// beside a bare recording of the same source.
void benchSoundToEnergy(const char* sink);

}  // namespace bench
