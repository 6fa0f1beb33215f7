#pragma once

#include "tools/kavhost/setup/settings.h"
#include "tools/kavhost/target/target_search.h"

#include <cstdint>
#include <span>

namespace KAV::Host {

class CEffect;
struct SProfile;

/// One of the two gains that a search may change.
struct SMainGain {
    std::int32_t index = 0;
    double lowestDb = 0; ///< at the host's values 0 and 1
    double highestDb = 0;
    SReach reach{}; ///< that a search may use
    double startDb = 0;

    SSetting At(double gainDb) const noexcept;
};

/// The gains before and after everything else in the effect.
struct SMainGains {
    SMainGain input;
    SMainGain output;
};

/// Those of an effect that is set up. `profile` may be null. Throws CUsageError if the effect has no such
/// gains, or the user has `settings` for one that is to be searched for.
SMainGains FindMainGains(const CEffect& effect, const SProfile* profile, const STargets& targets,
    std::span<const SSetting> settings);

} // namespace KAV::Host
