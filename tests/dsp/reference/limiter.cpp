#include "tests/dsp/reference/limiter.h"

#include <algorithm>
#include <cmath>

namespace KAV::Reference {

void CWindowMinimum::SetLength(std::size_t length) {
    _length = length;
    _pushes = 0;
    _candidates.assign(1, {1.0, length - 1}); // the last of the ones
}

double CWindowMinimum::Push(double value) {
    while (!_candidates.empty() && _candidates.back().value >= value) _candidates.pop_back();
    _candidates.push_back({value, _pushes + _length});
    if (_candidates.front().leaves == _pushes) _candidates.pop_front();
    ++_pushes;
    return _candidates.front().value;
}

void CMovingAverage::SetLength(std::size_t length) {
    _values.assign(length, 1.0);
    _write = 0;
    _sum = static_cast<double>(length);
}

double CMovingAverage::Push(double value) {
    _sum = _sum - _values[_write] + value;
    _values[_write] = value;
    if (++_write == _values.size()) _write = 0;
    return _sum / static_cast<double>(_values.size());
}

void CDelay::SetLength(std::size_t length) {
    _values.assign(length, 0.0);
    _write = 0;
}

double CDelay::Push(double value) {
    const double oldest = _values[_write];
    _values[_write] = value;
    if (++_write == _values.size()) _write = 0;
    return oldest;
}

CLimiter::CLimiter(CCoverage& coverage) : _coverage(coverage), _coefficientFloor(std::exp(-1.0)) {
    SetRate(44100.0);
}

double CLimiter::CoefficientOf(double seconds) const {
    return std::exp(-1.0 / (seconds * _tau));
}

void CLimiter::SetRate(double rateHz) {
    _coverage.Hit(ECase::LimiterRestarts);
    _rate = rateHz;
    _tau = rateHz / (-std::log(0.1));
    _lookAhead = LookAheadAt(rateHz);

    _minimum.SetLength(_lookAhead);
    _average1.SetLength(_lookAhead / 2 + 1);
    _average2.SetLength(_lookAhead / 2 + 1);
    for (CDelay& delay : _delays) delay.SetLength(_lookAhead);

    _slowFall = CoefficientOf(0.25);
    _slowRise = CoefficientOf(0.5);
    _curve1 = CoefficientOf(0.281);
    _curve2 = CoefficientOf(0.057);
    _curve3 = CoefficientOf(0.00054);
    _slow = 1.0;
    _manualState = 1.0;
    _autoState = 1.0;
    _autoCoefficient = CoefficientOf(0.001);
    SetParams(_thresholdPos, _ceilingPos, _releasePos, _auto);
}

double CLimiter::Rate() const {
    return _rate;
}

std::size_t CLimiter::LookAheadAt(double rateHz) {
    // About 1.4 ms in multiples of 64 samples, at least one multiple even at a very low rate.
    const auto samples = static_cast<std::size_t>(std::floor(rateHz * 0.0014 * 0.015625 + 0.6)) * 64;
    return samples == 0 ? 64 : samples;
}

std::size_t CLimiter::LookAhead() const {
    return _lookAhead;
}

void CLimiter::SetParams(double thresholdPos, double ceilingPos, double releasePos, bool automatic) {
    _thresholdPos = thresholdPos;
    _ceilingPos = ceilingPos;
    _releasePos = releasePos;
    _auto = automatic;
    _drive = 1.0 / std::pow(10.0, (30.0 * thresholdPos - 30.0) / 20.0);
    _ceiling = std::pow(10.0, (30.0 * ceilingPos - 30.0) / 20.0);
    _limit = 1.0;
    _manualCoefficient = std::exp(-1.0 / (std::pow(10.0, 5.0 * (releasePos - 1.0)) * _tau));
}

void CLimiter::Process(std::span<float* const> channels, int length) {
    _coverage.HitIf(_lastCount != 0 && _lastCount != channels.size(), ECase::ListLengthChange);
    _lastCount = channels.size();
    const bool substitute = _rate * 0.0014 * 0.015625 + 0.6 < 1.0;
    _coverage.Hit(substitute         ? ECase::WindowSubstitute
                  : _lookAhead == 64 ? ECase::WindowShortest
                                     : ECase::WindowLonger);
    for (int i = 0; i < length; ++i) {
        const double required = DriveAndRequire(channels, i);
        const double m = _minimum.Push(required);
        const double q = _auto ? ReleaseAuto(m) : ReleaseFixed(m);
        const double gain = _average2.Push(_average1.Push(q));
        Output(channels, i, gain);
        _coverage.HitIf(gain < _minimumGain, ECase::MinimumLowered);
        _minimumGain = (gain < _minimumGain) ? gain : _minimumGain;
    }
    if (_latch) {
        _coverage.Hit(ECase::LatchAnswered);
        _reportedGain = _minimumGain;
        _minimumGain = 1.0;
        _latch = false;
    }
}

double CLimiter::DriveAndRequire(std::span<float* const> channels, int i) {
    double peak = 0.0;
    for (float* channel : channels) {
        const float before = channel[i];
        const float x = static_cast<float>(static_cast<double>(before) * _drive);
        _coverage.HitIf(std::isinf(x) && std::isfinite(before), ECase::DriveOverflows);
        _coverage.HitIf(std::isnan(x), ECase::NanIgnoredByPeak);
        channel[i] = x;
        const double magnitude = std::fabs(static_cast<double>(x));
        if (magnitude > peak) peak = magnitude;
    }
    const double required = (peak < _limit) ? 1.0 : _limit / peak;
    _coverage.HitIf(required == 0.0, ECase::RequiredGainZero);
    return required;
}

double CLimiter::ReleaseFixed(double m) {
    if (_manualState > m) {
        _coverage.Hit(ECase::FixedAttack);
    } else {
        _coverage.HitIf(_manualState < m, ECase::FixedRecover);
        m = m + (_manualState - m) * _manualCoefficient;
    }
    _manualState = m;
    return m;
}

double CLimiter::ReleaseAuto(double m) {
    double d = _slow - m;
    if (_slow > m) {
        _coverage.Hit(ECase::SlowEnvelopeFalls);
        d = d * _slowFall;
    } else {
        _coverage.HitIf(_slow < m, ECase::SlowEnvelopeRises);
        d = d * _slowRise;
    }
    _slow = m + d;

    double g = (_slow < m) ? _slow : m;
    if (_autoState > g) {
        _coverage.Hit(ECase::AutoAttack);
    } else {
        _coverage.HitIf(_autoState < g, ECase::AutoRecover);
        g = g + (_autoState - g) * _autoCoefficient;
    }
    _autoState = g;

    double a = std::exp(-1.0 / (std::pow(1.0 - g, 4.0) * _tau));
    _coverage.Hit(a < _coefficientFloor ? ECase::FloorTaken : ECase::FloorNotTaken);
    a = (a < _coefficientFloor) ? _coefficientFloor : a;
    const double ahead = 2.0 * _slow - g;
    const double u = (1.0 < ahead) ? 1.0 : ahead;
    _autoCoefficient = Curve(u) * a;
    return g;
}

double CLimiter::Curve(double u) {
    if (u < 0.25) {
        _coverage.Hit(ECase::CurveFlat);
        return 1.0;
    }
    if (u < 0.5) {
        _coverage.Hit(ECase::CurveFirst);
        return (u - 0.25) * 4.0 * (_curve1 - 1.0) + 1.0;
    }
    if (u < 0.71) {
        _coverage.Hit(ECase::CurveSecond);
        return (_curve2 - _curve1) * ((u - 0.5) / 0.21) + _curve1;
    }
    _coverage.Hit(ECase::CurveThird);
    return (_curve3 - _curve2) * ((u - 0.71) / 0.29) + _curve2;
}

void CLimiter::Output(std::span<float* const> channels, int i, double gain) {
    for (std::size_t slot = 0; slot < channels.size(); ++slot) {
        // Two slots may share one buffer; then the later slot delays what the earlier one has just written.
        float* const channel = channels[slot];
        const double d = _delays[slot].Push(static_cast<double>(channel[i]));
        _coverage.HitIf(std::isnan(d), ECase::NanLeavesDelay);
        _coverage.HitIf(std::isinf(d), ECase::InfinityLeavesDelay);
        channel[i] = static_cast<float>(d * gain * _ceiling);
    }
}

void CLimiter::SetLatch() {
    _latch = true;
}

bool CLimiter::LatchPending() const {
    return _latch;
}

double CLimiter::ReportedGain() const {
    return _reportedGain;
}

} // namespace KAV::Reference
