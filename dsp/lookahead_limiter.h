#pragma once

#include "dsp/limiter_run.h"
#include "dsp/min_tree.h"
#include "dsp/processor_path.h"
#include "dsp/sample_history.h"
#include "utils/realtime.h"
#include "utils/shared.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace KAV::DSP {

/// Look-ahead length in samples at an (oversampled) rate in Hz: 1.4 ms, rounded to a multiple of 64, at least
/// 64.
std::size_t LookaheadLength(double rateHz) noexcept;

/// A brick-wall limiter for channels that share one gain. The threshold drives the signal against full scale,
/// the limiter holds it there, the ceiling scales the result. Attack is the look-ahead itself; release is
/// either fixed or follows the programme.
///
/// Threads: Reserve() and the constructor while audio is stopped; SetRate(), SetParams() and Process() on the
/// audio thread, where SetRate() allocates nothing up to the reserved rate. Latch(), ReportedGain() and
/// Lookahead() on any thread.
class LookaheadLimiter final {
public:
    static constexpr std::size_t MaxChannels = SLimiterRun::MaxChannels;

    LookaheadLimiter();

    /// Makes room for rates up to `rateHz` (oversampled).
    void Reserve(double rateHz);

    /// Restarts at `rateHz` (above 0): unity gain, empty delay lines.
    KAV_REALTIME void SetRate(double rateHz);
    /// Positions 0..1: threshold and ceiling span -30..0 dB, release 0.01..1000 ms (time to fall to 10 %).
    /// They take effect at the next sample, with no ramp.
    KAV_REALTIME void SetParams(
        float thresholdPos, float ceilingPos, float releasePos, bool autoRelease) noexcept;

    /// Limits up to 16 channels of `length` samples in place, delayed by Lookahead(). Delay lines belong to
    /// places in the list, not to host channels. All paths that the processor supports produce the same bits,
    /// and the path may change between calls.
    KAV_REALTIME void Process(std::span<float* const> channels, std::size_t length,
        EProcessorPath path = EProcessorPath::Plain) noexcept;

    KAV_REALTIME double Rate() const noexcept { return _rateHz; }

    /// Delay in samples at the limiter's rate.
    std::size_t Lookahead() const noexcept { return static_cast<std::size_t>(std::uint32_t{_lookahead}); }
    /// Asks for the lowest gain since the last request; the end of the next Process() answers.
    void Latch() noexcept { _latch = true; }
    /// The last answer, linear, 1 for no reduction.
    double ReportedGain() const noexcept { return _reportedGain; }

private:
    static constexpr std::size_t LongestRun = CSampleHistory<float>::LongestRun;
    static constexpr std::size_t ShortestMaximum = 16; // of peaks

    void Run(
        std::span<float* const> channels, std::size_t from, std::size_t length, EProcessorPath path) noexcept;
    void RefillTree(const SLimiterRun& run) noexcept;
    void RefillMaxima(const SLimiterRun& run) noexcept;
    static double Required(float peak) noexcept;

    // The plain path.
    void RunPlain(SLimiterRun& run) noexcept;
    static float Drive(const SLimiterRun& run, std::size_t i) noexcept;
    double FixedRelease(double required) noexcept;
    double AutoRelease(double required) noexcept;
    static void Output(const SLimiterRun& run, std::size_t i, double gain) noexcept;

    // Settings
    float _thresholdPos = 0.0f; // all three as last set
    float _ceilingPos = 0.0f;
    float _releasePos = 0.0f;
    double _rateHz = 0.0;
    double _drive = 1.0; // 1 / threshold, linear
    double _ceiling = 1.0;
    SReleaseCoefficients _coefficients;

    SLimiterState _state;
    std::array<CSampleHistory<float>, MaxChannels> _driven; // one look-ahead long
    CSampleHistory<float> _peaks;                           // one look-ahead long
    CSampleHistory<double> _released;
    CSampleHistory<double> _averaged;

    // The look-ahead's window, once for the plain path and once for the other paths; see SLimiterRun.
    MinTree _tree;
    std::array<CSampleHistory<float>, SLimiterRun::MaxMaxima> _maxima;
    std::size_t _maximaCount = 0; // in use
    bool _isTreeCurrent = true;   // otherwise it has to be rebuilt from the peaks
    bool _areMaximaCurrent = true;

    Utils::CShared<std::uint32_t> _lookahead{0};
    Utils::CShared<double> _reportedGain{1.0};
    Utils::CShared<bool> _latch{false};
};

} // namespace KAV::DSP
