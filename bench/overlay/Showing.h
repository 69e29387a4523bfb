#pragma once

#include "support/overlay_driver/RealOverlay.h"

namespace bench {

/// From show() to the first frame on the screen, beside an empty window of the same kind.
void benchFirstFrame(voxtrel::testing::RealOverlay& ours);

/// From show() to the first block of sound, beside a bare recording.
void benchFirstBlock(voxtrel::testing::RealOverlay& ours);

}  // namespace bench
