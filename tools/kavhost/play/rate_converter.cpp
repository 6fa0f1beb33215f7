#include "tools/kavhost/play/rate_converter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace KAV::Host {

namespace {

constexpr int HalfTaps = 48;         ///< of the filter on either side, at the lower rate
constexpr double Cutoff = 0.95;      ///< of half the lower rate
constexpr double WindowShape = 8;    ///< of Kaiser's window: 80 dB
constexpr std::size_t Phases = 512;  ///< between two frames; what lies between two of them is interpolated
constexpr std::size_t Portion = 256; ///< frames that are read at a time

/// The modified Bessel function of the first kind, order 0, by its series.
double BesselI0(double x) noexcept {
    double sum = 1;
    double term = 1;
    for (int k = 1; k < 60; ++k) {
        term *= x / 2 / k * (x / 2 / k);
        sum += term;
    }
    return sum;
}

double Kaiser(double place) noexcept { // -1 to 1
    const double rest = 1 - place * place;
    return rest <= 0 ? 0 : BesselI0(WindowShape * std::sqrt(rest)) / BesselI0(WindowShape);
}

double Sinc(double x) noexcept {
    if (x == 0) return 1;
    return std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

} // namespace

CRateConverter::CRateConverter(int fromHz, int toHz, std::size_t channels)
    : _fromHz(static_cast<std::uint32_t>(fromHz)), _toHz(static_cast<std::uint32_t>(toHz)),
      _channels(channels) {
    if (fromHz == toHz) return;
    const double lower = std::min(1.0, static_cast<double>(toHz) / fromHz); // of the input's rate
    const auto half = static_cast<std::size_t>(std::ceil(HalfTaps / lower));
    _taps = 2 * half;
    _phases.resize((Phases + 1) * _taps);
    for (std::size_t phase = 0; phase <= Phases; ++phase) {
        float* const taps = _phases.data() + phase * _taps;
        double sum = 0;
        for (std::size_t k = 0; k < _taps; ++k) {
            const double time =
                static_cast<double>(k) - static_cast<double>(half - 1) - static_cast<double>(phase) / Phases;
            const double tap = Sinc(time * lower * Cutoff) * Kaiser(time / static_cast<double>(half));
            taps[k] = static_cast<float>(tap);
            sum += tap;
        }
        for (std::size_t k = 0; k < _taps; ++k) taps[k] /= static_cast<float>(sum);
    }
    _input.resize((_taps + Portion) * channels);
    _frames = half - 1; // silence before the first frame
}

void CRateConverter::Fill(std::span<float> interleaved, const AudioSource& source) noexcept {
    if (_taps == 0) return source(interleaved);
    for (std::size_t i = 0; i < interleaved.size(); i += _channels) {
        while (_first + _taps > _frames) ReadMore(source);
        MakeFrame(&interleaved[i]);
        _between += _fromHz;
        _first += _between / _toHz;
        _between %= _toHz;
    }
}

void CRateConverter::ReadMore(const AudioSource& source) noexcept {
    const auto past = std::min(_first, _frames);
    std::copy(_input.begin() + static_cast<std::ptrdiff_t>(past * _channels),
        _input.begin() + static_cast<std::ptrdiff_t>(_frames * _channels), _input.begin());
    _first -= past;
    _frames -= past;
    source(std::span(_input).subspan(_frames * _channels, Portion * _channels));
    _frames += Portion;
}

void CRateConverter::MakeFrame(float* frame) const noexcept {
    const double place = static_cast<double>(_between) / _toHz * Phases;
    const auto phase = static_cast<std::size_t>(place);
    const auto part = static_cast<float>(place - static_cast<double>(phase));
    const float* const taps = _phases.data() + phase * _taps;
    const float* sample = _input.data() + _first * _channels;
    std::fill(frame, frame + _channels, 0.0f);
    for (std::size_t k = 0; k < _taps; ++k) {
        const float tap = taps[k] + (taps[k + _taps] - taps[k]) * part;
        for (std::size_t c = 0; c < _channels; ++c) frame[c] += tap * *sample++;
    }
}

} // namespace KAV::Host
