#pragma once

#include "tools/kavhost/target/programme.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace KAV::Host {

/// A sound file's levels, as any reader finds them.
struct SFileLevels {
    Tenths tenths;
    std::vector<double> tenthPeaksDb; ///< sample peaks in dBFS; one for each of `tenths`
    double truePeakDbtp = 0;
    std::uint64_t frames = 0;
    int rateHz = 0;
    std::uint64_t notFinite = 0; ///< samples; the levels leave them out
    bool isMeasured = false;     ///< false if the build cannot measure loudness, or not at this rate
};

/// Reads the whole file. `weights` are those of its channels. Throws CFailure or CInterruption.
SFileLevels MeasureFile(const std::filesystem::path& file, std::span<const double> weights);

} // namespace KAV::Host
