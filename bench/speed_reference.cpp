#include "bench/speed_reference.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace KAV::Bench {

CReferenceLimiter::CReferenceLimiter(double rateHz, double driveDb, double releaseSeconds, bool autoRelease)
    : _auto(autoRelease), _tau(rateHz / -std::log(0.1)), _drive(std::pow(10.0, driveDb / 20.0)),
      _release(Coefficient(releaseSeconds)), _fall(Coefficient(0.25)),
      _rise(Coefficient(0.5)), _curve{Coefficient(0.281), Coefficient(0.057), Coefficient(0.00054)},
      _autoCoefficient(Coefficient(0.001)) {
    const auto lookahead = static_cast<std::size_t>(std::floor(rateHz * 0.0014 / 64.0 + 0.6)) * 64;
    _window.Reset(lookahead);
    for (SAverage& average : _averages) {
        average.values.assign(lookahead / 2 + 1, 1.0);
        average.sum = static_cast<double>(average.values.size());
    }
    for (auto& delay : _delays) delay.assign(lookahead, 0.0);
}

double CReferenceLimiter::Coefficient(double seconds) const {
    return std::exp(-1.0 / (seconds * _tau));
}

double CReferenceLimiter::Weight(double u) const {
    if (u < 0.25) return 1.0;
    if (u < 0.5) return (u - 0.25) * 4.0 * (_curve[0] - 1.0) + 1.0;
    if (u < 0.71) return (_curve[1] - _curve[0]) * ((u - 0.5) / 0.21) + _curve[0];
    return (_curve[2] - _curve[1]) * ((u - 0.71) / 0.29) + _curve[1];
}

void CReferenceLimiter::Process(float* const* channels, std::size_t count, std::size_t length) {
    if (_gains.size() < length) _gains.resize(length);
    std::fill_n(_gains.begin(), length, 0.0);
    for (std::size_t c = 0; c < count; ++c) {
        for (std::size_t i = 0; i < length; ++i) {
            channels[c][i] = static_cast<float>(static_cast<double>(channels[c][i]) * _drive);
            _gains[i] = std::max(_gains[i], std::fabs(static_cast<double>(channels[c][i])));
        }
    }
    for (std::size_t i = 0; i < length; ++i) _gains[i] = _gains[i] < 1.0 ? 1.0 : 1.0 / _gains[i];
    for (std::size_t i = 0; i < length; ++i) _gains[i] = _window.Push(_gains[i]);
    if (_auto) {
        Automatic(length);
    } else {
        Fixed(length);
    }
    for (SAverage& average : _averages) Average(average, length);
    for (std::size_t c = 0; c < count; ++c) {
        std::size_t& index = _delayIndex[c];
        for (std::size_t i = 0; i < length; ++i) {
            const double delayed = _delays[c][index];
            _delays[c][index] = static_cast<double>(channels[c][i]);
            if (++index == _delays[c].size()) index = 0;
            channels[c][i] = static_cast<float>(delayed * _gains[i]);
        }
    }
}

void CReferenceLimiter::Fixed(std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        double gain = _gains[i];
        if (!(_state > gain)) gain = gain + (_state - gain) * _release;
        _gains[i] = _state = gain;
    }
}

void CReferenceLimiter::Automatic(std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        const double distance = _slow - _gains[i];
        _slow = _gains[i] + distance * (_slow > _gains[i] ? _fall : _rise);
        double gain = std::min(_gains[i], _slow);
        if (!(_state > gain)) gain = gain + (_state - gain) * _autoCoefficient;
        _gains[i] = _state = gain;
        const double a = std::max(Coefficient(std::pow(1.0 - gain, 4.0)), std::exp(-1.0));
        _autoCoefficient = Weight(std::min(2.0 * _slow - gain, 1.0)) * a;
    }
}

void CReferenceLimiter::Average(SAverage& average, std::size_t length) {
    const auto size = static_cast<double>(average.values.size());
    for (std::size_t i = 0; i < length; ++i) {
        average.sum = average.sum - average.values[average.index] + _gains[i];
        average.values[average.index] = _gains[i];
        if (++average.index == average.values.size()) average.index = 0;
        _gains[i] = average.sum / size;
    }
}

CReferenceCascade::CReferenceCascade(std::size_t order, double cutoff) : _stages(order / 2) {
    const double f = std::tan(std::numbers::pi * cutoff);
    double atZero = 1.0;
    for (std::size_t i = 0; i < _stages.size(); ++i) {
        const double angle = std::numbers::pi / 2.0 + static_cast<double>(2 * i + 1) * std::numbers::pi /
                                                          (2.0 * static_cast<double>(order));
        const std::complex<double> analogue = std::polar(1.0, angle);
        const std::complex<double> pole = (1.0 + f * analogue) / (1.0 - f * analogue);
        _stages[i].a1 = -2.0 * pole.real();
        _stages[i].a2 = std::norm(pole);
        atZero *= 4.0 / (1.0 + _stages[i].a1 + _stages[i].a2);
    }
    for (double* b : {&_stages[0].b0, &_stages[0].b1, &_stages[0].b2}) *b /= atZero;
}

void CReferenceCascade::Process(float* channel, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        _extra = -_extra;
        double extra = _extra;
        double x = static_cast<double>(channel[i]);
        for (SStage& s : _stages) {
            const double w = x - s.a1 * s.w1 - s.a2 * s.w2 + extra;
            x = s.b0 * w + s.b1 * s.w1 + s.b2 * s.w2;
            s.w2 = s.w1;
            s.w1 = w;
            extra = 0.0;
        }
        channel[i] = static_cast<float>(x);
    }
}

} // namespace KAV::Bench
