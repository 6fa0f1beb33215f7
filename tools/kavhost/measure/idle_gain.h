#pragma once

#include <vector>

namespace KAV::Host {

class CEffect;

/// A started effect's gain of each channel in decibels while it has nothing to limit, measured with dull
/// noise more than 60 dB below full scale. 0 dB for a channel without output. The effect should have settled;
/// its state is changed.
std::vector<double> MeasureIdleGains(CEffect& effect);

} // namespace KAV::Host
