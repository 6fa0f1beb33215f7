#include "dsp/lookahead_limiter.h"

#include "dsp/level.h"

#include <algorithm>
#include <cmath>

namespace KAV::DSP {

std::size_t LookaheadLength(double rateHz) noexcept {
    const double steps = std::floor(rateHz * 0.0014 * 0.015625 + 0.6);
    return steps < 1.0
               ? 64
               : static_cast<std::size_t>(steps) * 64; // below some 18 kHz: the shortest window there is
}

LookaheadLimiter::LookaheadLimiter() : _coefficientFloor(std::exp(-1.0)) {
    Reserve(44100.0);
    SetRate(44100.0);
}

void LookaheadLimiter::Reserve(double rateHz) {
    const std::size_t lookahead = LookaheadLength(rateHz);
    _window.Reserve(lookahead);
    for (auto& average : _averages) average.Reserve(lookahead / 2 + 1);
    for (auto& delay : _delays) delay.Reserve(lookahead);
}

void LookaheadLimiter::SetRate(double rateHz) {
    _rateHz = rateHz;
    const std::size_t lookahead = LookaheadLength(rateHz);
    _tau = rateHz / -std::log(0.1);
    _envelopeFall = Coefficient(0.25);
    _envelopeRise = Coefficient(0.5);
    _curve = {Coefficient(0.281), Coefficient(0.057), Coefficient(0.00054)};
    _lookahead = static_cast<std::uint32_t>(lookahead);

    _window.Reset(lookahead);
    for (auto& average : _averages) average.Reset(lookahead / 2 + 1);
    for (auto& delay : _delays) delay.Reset(lookahead);

    _slowEnvelope = _manualState = _autoState = 1.0;
    _autoCoefficient = Coefficient(0.001);
    SetParams(_thresholdPos, _ceilingPos, _releasePos, _auto);
}

void LookaheadLimiter::SetParams(
    float thresholdPos, float ceilingPos, float releasePos, bool autoRelease) noexcept {
    _thresholdPos = thresholdPos;
    _ceilingPos = ceilingPos;
    _releasePos = releasePos;
    _auto = autoRelease;
    _drive = 1.0 / GainOfDb(30.0 * static_cast<double>(thresholdPos) - 30.0);
    _ceiling = GainOfDb(30.0 * static_cast<double>(ceilingPos) - 30.0);
    _manualCoefficient = Coefficient(std::pow(10.0, 5.0 * (static_cast<double>(releasePos) - 1.0)));
}

void LookaheadLimiter::Process(std::span<float* const> channels, std::size_t length) noexcept {
    for (std::size_t i = 0; i < length; ++i) {
        const double peak = Drive(channels, i);
        const double required = _window.Push(peak < Limit ? 1.0 : Limit / peak);
        const double released = _auto ? AutoRelease(required) : FixedRelease(required);
        const double gain = _averages[1].Push(_averages[0].Push(released));
        Output(channels, i, gain);
        _minimumGain = std::min(_minimumGain, gain);
    }
    if (_latch) {
        _reportedGain = _minimumGain;
        _minimumGain = 1.0;
        _latch = false;
    }
}

double LookaheadLimiter::Coefficient(double seconds) const noexcept {
    return std::exp(-1.0 / (seconds * _tau));
}

/// Drives sample `i` of all channels in place and gives the largest magnitude; not-a-number never is the
/// largest.
double LookaheadLimiter::Drive(std::span<float* const> channels, std::size_t i) const noexcept {
    double peak = 0.0;
    for (float* const channel : channels) {
        const float x = static_cast<float>(static_cast<double>(channel[i]) * _drive);
        channel[i] = x;
        peak = std::max(peak, std::fabs(static_cast<double>(x)));
    }
    return peak;
}

double LookaheadLimiter::FixedRelease(double required) noexcept {
    if (!(_manualState > required)) {
        required = required + (_manualState - required) * _manualCoefficient;
    }
    _manualState = required;
    return required;
}

// Symbols of the programme-dependent release, all gains and per sample:
//   slow   an envelope of the required gain, falling to 10 % of the distance in 0.25 s and rising in 0.5 s
//   g      the gain: never above the required one nor the slow envelope, recovering with the coefficient a x
//   k a      coefficient of (1 - g)^4 seconds: the deeper the reduction, the slower the recovery u      a
//   value near g in steady state, ahead of it while the slow envelope is above it k      weight of a over u,
//   see ReleaseCurve()
double LookaheadLimiter::AutoRelease(double required) noexcept {
    const double distance = _slowEnvelope - required;
    _slowEnvelope = required + distance * (_slowEnvelope > required ? _envelopeFall : _envelopeRise);
    double g = std::min(required, _slowEnvelope);
    if (!(_autoState > g)) g = g + (_autoState - g) * _autoCoefficient;
    _autoState = g;
    const double a = std::max(Coefficient(std::pow(1.0 - g, 4.0)), _coefficientFloor);
    const double u = std::min(2.0 * _slowEnvelope - g, 1.0);
    _autoCoefficient = ReleaseCurve(u) * a; // for the next sample
    return g;
}

/// 1 below a gain of 0.25, then through the three curve points at 0.5, 0.71 and 1, linear between them.
double LookaheadLimiter::ReleaseCurve(double gain) const noexcept {
    if (gain < 0.25) return 1.0;
    if (gain < 0.5) return (gain - 0.25) * 4.0 * (_curve[0] - 1.0) + 1.0;
    if (gain < 0.71) return (_curve[1] - _curve[0]) * ((gain - 0.5) / 0.21) + _curve[0];
    return (_curve[2] - _curve[1]) * ((gain - 0.71) / 0.29) + _curve[1];
}

void LookaheadLimiter::Output(std::span<float* const> channels, std::size_t i, double gain) noexcept {
    for (std::size_t slot = 0; slot < channels.size(); ++slot) {
        const double delayed = _delays[slot].Exchange(static_cast<double>(channels[slot][i]));
        channels[slot][i] = static_cast<float>(delayed * gain * _ceiling);
    }
}

} // namespace KAV::DSP
