#pragma once

#include "tools/kavhost/measure/min_max_series.h"

#include <cstddef>
#include <deque>
#include <span>
#include <vector>

namespace KAV::Host {

/// The number of frames per loudness value, a tenth of a second.
std::size_t LoudnessStepFrames(int rateHz) noexcept;

/// The levels of a signal over time.
class CSignalTimeline final {
public:
    explicit CSignalTimeline(int channels) : _channels(static_cast<std::size_t>(channels)) {}

    /// Over all channels, a step for each frame; samples that are not finite are left out.
    void AddSamples(std::span<const float> interleaved);

    /// The loudness of the next tenth of a second, in LUFS.
    void AddTenth(double lufs);

    const CMinMaxSeries& Amplitude() const noexcept { return _amplitude; }

    /// Short-term loudness after EBU Tech 3341, in LUFS: each step has that of the three seconds that end
    /// with it. Steps before the first whole three seconds are empty.
    const CMinMaxSeries& ShortTerm() const noexcept { return _shortTerm; }

private:
    std::size_t _channels;
    CMinMaxSeries _amplitude;
    CMinMaxSeries _shortTerm;
    std::deque<double> _powers; ///< of the last tenths, at most three seconds
};

/// What an effect does to a file, over time.
struct STimeline {
    STimeline(int channels, std::span<const double> idleDb)
        : before(channels), after(channels), idleGainsDb(idleDb.begin(), idleDb.end()) {}

    /// Takes a gain per channel, in decibels; not-a-number if there was too little sound to measure.
    void AddGains(std::span<const double> gains);

    CSignalTimeline before;
    CSignalTimeline after;
    std::vector<double> idleGainsDb; ///< of each channel: the effect's gain while it has nothing to limit;
                                     ///< empty if no gains are added
    CMinMaxSeries gain;              ///< in decibels, over the channels
    CMinMaxSeries reduction; ///< the same relative to the idle gain: 0 or below where an effect limits
};

} // namespace KAV::Host
