#pragma once

namespace bench {

/// From samples written to `sink`, which the default source hears, to new levels of the bars, beside
/// a bare recording of the same source.
void benchSoundToEnergy(const char* sink);

}  // namespace bench
