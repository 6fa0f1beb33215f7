#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace KAV::Host {

/// The gains that an effect applied over a file, in decibels.
struct SGainRange {
    double lowest = 0;
    double highest = 0;
    std::int64_t lowestFrame = 0; ///< where the window of the lowest gain begins
    std::int64_t highestFrame = 0;
};

/// Estimates an effect's gain from outside. The gain of a channel in a window of 10 ms is the ratio of the
/// output's RMS to that of the input, so it is the mean over the window, weighted by the signal's power.
/// Windows with an input below -60 dBFS are left out: there the noise of dither would pass for gain. Input
/// and output must be aligned; the output may come later.
class CGainMeter final {
public:
    CGainMeter(int channels, int rateHz);

    void AddInput(std::span<const float> interleaved);
    void AddOutput(std::span<const float> interleaved);

    /// Nothing when no whole window had a signal.
    std::optional<SGainRange> Range() const { return _range; }

private:
    /// Sums squares per channel until a window is full.
    struct SWindow {
        std::vector<double> energies;
        std::size_t frames = 0;
    };

    template<typename FULL>
    void Add(SWindow& window, std::span<const float> interleaved, FULL onFull);
    void Compare(std::span<const double> outputs);

    std::size_t _windowFrames;
    SWindow _input;
    SWindow _output;
    std::deque<double>
        _waiting; ///< the input's full windows that the output has not reached, channel by channel
    std::int64_t _compared = 0; ///< windows
    std::optional<SGainRange> _range;
};

} // namespace KAV::Host
