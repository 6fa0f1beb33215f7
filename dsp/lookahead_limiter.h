#pragma once

#include "dsp/box_average.h"
#include "dsp/delay_line.h"
#include "dsp/min_tree.h"
#include "utils/realtime.h"
#include "utils/shared.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace KAV::DSP {

/// Look-ahead length in samples at an (oversampled) rate in Hz: 1.4 ms, taken to a multiple of 64, at
/// least 64.
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
    static constexpr std::size_t MaxChannels = 16;

    LookaheadLimiter();

    /// Makes room for rates up to `rateHz` (oversampled).
    void Reserve(double rateHz);

    /// Starts anew at `rateHz` (above 0): unity gain, empty delay lines.
    KAV_REALTIME void SetRate(double rateHz);
    /// Positions 0..1: threshold and ceiling span -30..0 dB, release 0.01..1000 ms (time to fall to 10 %).
    /// They take effect at the next sample, with no ramp.
    KAV_REALTIME void SetParams(
        float thresholdPos, float ceilingPos, float releasePos, bool autoRelease) noexcept;

    /// Limits up to 16 channels of `length` samples in place, delayed by Lookahead(). Delay lines belong to
    /// places in the list, not to host channels.
    KAV_REALTIME void Process(std::span<float* const> channels, std::size_t length) noexcept;

    KAV_REALTIME double Rate() const noexcept { return _rateHz; }

    /// Delay in samples at the limiter's rate.
    std::size_t Lookahead() const noexcept { return static_cast<std::size_t>(std::uint32_t{_lookahead}); }
    /// Asks for the lowest gain since the last request; the end of the next Process() answers.
    void Latch() noexcept { _latch = true; }
    /// The last answer, linear, 1 for no reduction.
    double ReportedGain() const noexcept { return _reportedGain; }

private:
    /// exp(-1 / (t x tau)): what a one-pole keeps per sample to fall to 10 % in `seconds`.
    double Coefficient(double seconds) const noexcept;
    double Drive(std::span<float* const> channels, std::size_t i) const noexcept;
    double FixedRelease(double required) noexcept;
    double AutoRelease(double required) noexcept;
    double ReleaseCurve(double gain) const noexcept;
    void Output(std::span<float* const> channels, std::size_t i, double gain) noexcept;

    // Settings
    float _thresholdPos = 0.0f; // the four as last given
    float _ceilingPos = 0.0f;
    float _releasePos = 0.0f;
    bool _auto = false;
    double _rateHz = 0.0;
    double _tau = 0.0;   // samples per second of a fall to 10 %, rate / -ln 0.1
    double _drive = 1.0; // 1 / threshold, linear
    double _ceiling = 1.0;
    static constexpr double Limit = 1.0; // where the driven signal is held

    // Fixed release
    double _manualCoefficient = 0.0;
    double _manualState = 1.0; // gain

    // Programme-dependent release; see AutoRelease()
    double _slowEnvelope = 1.0; // gain
    double _autoState = 1.0;    // gain
    double _autoCoefficient = 0.0;
    double _envelopeFall = 0.0;
    double _envelopeRise = 0.0;
    std::array<double, 3> _curve{}; // coefficients at the corners of ReleaseCurve()
    const double _coefficientFloor;

    // Stages
    MinTree _window;
    std::array<BoxAverage, 2> _averages;
    std::array<DelayLine, MaxChannels> _delays;

    double _minimumGain = 1.0; // since the last answered latch
    Utils::CShared<std::uint32_t> _lookahead{0};
    Utils::CShared<double> _reportedGain{1.0};
    Utils::CShared<bool> _latch{false};
};

} // namespace KAV::DSP
