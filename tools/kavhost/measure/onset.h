#pragma once

namespace KAV::Host {

class CEffect;

/// The level in dBFS of a sample peak, the same in all channels, above which a started effect takes its gain
/// back. Infinity if it does so nowhere below +60 dBFS. The effect should have settled; its state is changed.
double MeasureOnset(CEffect& effect);

} // namespace KAV::Host
