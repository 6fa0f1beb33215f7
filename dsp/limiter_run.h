#pragma once

#include "utils/channels.h"
#include "utils/realtime.h"

#include <cstddef>

// What the limiter passes to the code for one kind of processor. Plain records without operations, because
// sources with their own compiler flags include this; see lanes.h.

namespace KAV::DSP {

/// How the gain recovers; constant while a run lasts. See release_law.h.
struct SReleaseCoefficients {
    bool automatic = false; ///< which of the two releases runs
    double fixedCoefficient = 0.0;
    double tau = 0.0; ///< samples per second of a fall to 10 %, rate / -ln 0.1
    double envelopeFall = 0.0;
    double envelopeRise = 0.0;
    double curve[3] = {}; ///< coefficients at the corners of the weight
    double coefficientFloor = 0.0;
    double floorGain = 0.0; ///< from this gain upwards the floor is certain to apply
};

/// The state that one sample passes to the next; all gains.
struct SLimiterState {
    double fixed = 1.0;                ///< of the fixed release
    double slow = 1.0;                 ///< slow envelope of the programme-dependent release
    double automatic = 1.0;            ///< gain of the programme-dependent release
    double automaticCoefficient = 0.0; ///< what its next sample keeps of the distance
    bool isCoefficientKnown = false;   ///< otherwise it is still to be computed from the two above
    double sums[2] = {};  ///< of the two averages, summed in the order in which values entered and left
    double minimum = 1.0; ///< lowest gain so far
    std::size_t equalGainsInARow = 0; ///< how many identical released gains came last in a row
};

/// A run of samples through the limiter. Only the used entries of the lists are filled. Histories point to
/// the place of the run's first value and have earlier values before it; up to a chunk's length past the end
/// of the run may be overwritten. No two channels share a buffer, except on the plain path.
struct SLimiterRun { // NOLINT(cppcoreguidelines-pro-type-member-init)
    static constexpr std::size_t MaxChannels = Utils::MostChannels;
    static constexpr std::size_t MaxMaxima = 12; ///< enough for a look-ahead of 65536 samples

    std::size_t channelCount = 0;
    std::size_t length = 0;
    float* channels[MaxChannels]; ///< in place
    double drive = 1.0;
    double ceiling = 1.0;
    std::size_t lookahead = 0; ///< a multiple of 64
    std::size_t size = 0;      ///< of each average: lookahead / 2 + 1, so odd

    float* driven[MaxChannels]; ///< `lookahead` earlier driven samples before it
    float* peaks =
        nullptr; ///< `lookahead` earlier values before it, each the highest magnitude over all channels
    /// maxima[k]: the highest of the 16 x 2^k peaks up to its own place, with as many earlier values before
    /// it.
    float* maxima[MaxMaxima];
    double* released = nullptr; ///< `size` earlier released gains before it
    double* averaged = nullptr; ///< `size` earlier averages of them before it
    /// Out: how many values were written to the two above. Fewer than `length` if the rest would have been
    /// the same.
    std::size_t averagedCount = 0;
};

/// Both produce the same bits as the plain path.
KAV_REALTIME void RunLimiterNarrow(
    SLimiterRun& run, const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept;
KAV_REALTIME void RunLimiterWide(
    SLimiterRun& run, const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept;

} // namespace KAV::DSP
