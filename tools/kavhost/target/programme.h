#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

namespace KAV::Host {

/// The energy of each tenth of a second of one file, over all channels as ITU-R BS.1770 weights them.
using Tenths = std::vector<double>;

/// The energy that the recommendation calls `lufs`, and the other way; minus infinity is silence.
double EnergyOf(double lufs) noexcept;
double LufsOf(double energy) noexcept;

/// The integrated loudness of files that count as one programme, made louder by `gainDb`: the mean of their
/// blocks of 400 ms, which overlap by three quarters, above both gates of the recommendation. Minus infinity
/// if no block is above the absolute gate. No block crosses from one file into the next.
double GatedLufs(std::span<const Tenths> files, double gainDb = 0);

/// One file, or several as one programme, as a render measured it.
struct SProgramme {
    std::vector<Tenths> tenths; ///< of each file
    double truePeakDbtp = -std::numeric_limits<double>::infinity();
};

} // namespace KAV::Host
