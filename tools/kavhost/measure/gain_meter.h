#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
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

/// How far an effect went below the gain that it has while there is nothing to limit.
struct SReduction {
    double largestDb = 0;          ///< 0 or above
    std::int64_t largestFrame = 0; ///< where the window of the largest begins
    double over1Db = 0;            ///< the share of the file's windows in which it was more, 0 to 1
    double over3Db = 0;
    double over6Db = 0;
};

/// Frames of a window of the gain meter.
std::size_t GainWindowFrames(int rateHz) noexcept;

/// Estimates an effect's gain from outside. The gain of a channel in a window of 10 ms is output RMS divided
/// by input RMS, which is the mean over the window, weighted by the signal's power. Windows with an input
/// below -60 dBFS are left out, because there the noise of dither would look like gain. So are windows with a
/// sample that is not a finite number. Input and output must be aligned; either may come later.
/// Threads: AddInput() on one, AddOutput() on one, at the same time.
class CGainMeter final {
public:
    /// Receives the gains of each window, channel by channel; not-a-number for those that are left out.
    /// Called on either thread, on one at a time and in the order of the windows.
    using WindowSink = std::function<void(std::span<const double> gains)>;

    /// `idleGainsDb`: of each channel, its gain while there is nothing to limit.
    CGainMeter(std::span<const double> idleGainsDb, int rateHz, WindowSink onWindow = {});

    void AddInput(std::span<const float> interleaved);
    void AddOutput(std::span<const float> interleaved);

    /// When all has been added. Nothing if no whole window had a signal.
    std::optional<SGainRange> Range() const { return _range; }

    /// The same. A channel that the effect silences is muted rather than limited, and doesn't count.
    std::optional<SReduction> Reduction() const;

private:
    /// Sums squares per channel until a window is full.
    struct SWindow {
        std::vector<double> energies;
        std::size_t frames = 0;
    };

    void Add(SWindow& window, std::span<const float> interleaved, std::deque<double>& full);
    void Compare();
    void Note(double gain, std::int64_t frame);
    void NoteReduction(double largest, std::int64_t frame);

    std::vector<double> _idleGainsDb;
    WindowSink _onWindow;
    std::size_t _windowFrames;
    SWindow _input;
    SWindow _output;
    std::mutex _mutex;          ///< held for all that follows
    std::deque<double> _inputs; ///< full windows that the other side has not reached, channel by channel
    std::deque<double> _outputs;
    std::vector<double> _gains; ///< of one window
    std::int64_t _compared = 0; ///< windows
    std::optional<SGainRange> _range;
    SReduction _reduction;
    std::int64_t _over1 = 0; ///< windows
    std::int64_t _over3 = 0;
    std::int64_t _over6 = 0;
};

} // namespace KAV::Host
