#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
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

/// Frames of a window of the gain meter.
std::size_t GainWindowFrames(int rateHz) noexcept;

/// Estimates an effect's gain from outside. The gain of a channel in a window of 10 ms is output RMS divided
/// by input RMS, which is the mean over the window, weighted by the signal's power. Windows with an input
/// below -60 dBFS are left out, because there the noise of dither would look like gain. So are windows with a
/// sample that is not a finite number. Input and output must be aligned; the output may come later.
class CGainMeter final {
public:
    /// Receives the gains of each window, channel by channel; not-a-number for those that are left out.
    using WindowSink = std::function<void(std::span<const double> gains)>;

    CGainMeter(int channels, int rateHz, WindowSink onWindow = {});

    void AddInput(std::span<const float> interleaved);
    void AddOutput(std::span<const float> interleaved);

    /// Nothing if no whole window had a signal.
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
    void Note(double gain, std::int64_t frame);

    WindowSink _onWindow;
    std::size_t _windowFrames;
    SWindow _input;
    SWindow _output;
    std::deque<double>
        _waiting; ///< the input's full windows that the output has not reached, channel by channel
    std::vector<double> _gains; ///< of one window
    std::int64_t _compared = 0; ///< windows
    std::optional<SGainRange> _range;
};

} // namespace KAV::Host
