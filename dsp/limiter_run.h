#pragma once

#include "utils/channels.h"
#include "utils/realtime.h"

#include <cstddef>

// What the limiter hands to the code for one kind of processor. Plain records without operations: sources
// with compiler flags of their own include this; see lanes.h.

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
    double floorGain = 0.0; ///< from this gain upwards the floor is taken for certain
};

/// What one sample leaves to the next; all gains.
struct SLimiterState {
    double fixed = 1.0;                ///< of the fixed release
    double slow = 1.0;                 ///< slow envelope of the programme-dependent release
    double automatic = 1.0;            ///< its gain
    double automaticCoefficient = 0.0; ///< what its next sample keeps
    bool isCoefficientKnown = false;   ///< or is still to be computed from the two above
    double sums[2] = {};               ///< of the two averages, in the order in which values came and went
    double minimum = 1.0;              ///< lowest gain so far
    std::size_t equalGainsInARow = 0;  ///< how many identical released gains came last in a row
};

/// A run of samples through the limiter. Only the used places of the lists are filled. Histories point to the
/// place of the run's first value, with earlier values before it; up to a chunk's length past the end of the
/// run may be overwritten. No two channels share a buffer, except on the plain path.
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

    float* driven[MaxChannels]; ///< `lookahead` driven samples back
    float* peaks = nullptr;     ///< `lookahead` of the highest magnitudes over all channels back
    /// maxima[k]: as many back as each looks at, the highest of the 16 x 2^k peaks up to its own place.
    float* maxima[MaxMaxima];
    double* released = nullptr; ///< `size` released gains back
    double* averaged = nullptr; ///< `size` of their averages back
    /// Out: values written to the two above. Fewer than `length` where they would have been the same again.
    std::size_t averagedCount = 0;
};

/// Both keep to the same bits as the plain path.
KAV_REALTIME void RunLimiterNarrow(
    SLimiterRun& run, const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept;
KAV_REALTIME void RunLimiterWide(
    SLimiterRun& run, const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept;

} // namespace KAV::DSP
