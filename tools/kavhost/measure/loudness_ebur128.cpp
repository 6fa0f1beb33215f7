#include "tools/kavhost/measure/loudness.h"
#include "tools/kavhost/measure/speaker_weights.h"
#include "tools/kavhost/measure/timeline.h"

#include <algorithm>
#include <cmath>
#include <ebur128.h>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

namespace KAV::Host {

namespace {

constexpr unsigned long TenthMs = 100;
constexpr std::size_t MomentaryTenths = 4;
constexpr std::size_t ShortTermTenths = 30;

/// The library has a number of its own for silence.
double Loudness(double lufs) noexcept {
    return lufs <= std::numeric_limits<double>::lowest() ? -std::numeric_limits<double>::infinity() : lufs;
}

/// One of the library's speakers with this weight.
int SpeakerOf(double weight) noexcept {
    if (weight == 0) return EBUR128_UNUSED;
    if (weight == SideWeight) return EBUR128_Mp110;
    return weight == 2 ? EBUR128_DUAL_MONO : EBUR128_Mp000;
}

struct SDestroyer {
    void operator()(ebur128_state* state) const noexcept { ebur128_destroy(&state); }
};

/// The mean power of this many tenths in a row, and the highest that there was.
class CLoudestTenths final {
public:
    explicit CLoudestTenths(std::size_t count) : _ring(count) {}

    /// Nothing until there are enough.
    std::optional<double> Add(double power) noexcept {
        _ring[_tenths++ % _ring.size()] = power;
        if (_tenths < _ring.size()) return std::nullopt;
        double sum = 0;
        for (const double one : _ring) sum += one;
        const double mean = sum / static_cast<double>(_ring.size());
        _highest = std::max(_highest, mean);
        return mean;
    }

    std::optional<double> Lufs() const noexcept {
        if (_tenths < _ring.size()) return std::nullopt;
        return 10 * std::log10(_highest);
    }

private:
    std::vector<double> _ring;
    std::size_t _tenths = 0;
    double _highest = 0;
};

/// The range between a tenth and nineteen twentieths of what is not below the gates, 10 times a second. The
/// library looks once a second, by which short pieces come out several LU narrower.
double RangeOf(std::vector<double> powers) {
    constexpr double absoluteGate = 1e-7; // -70 LUFS
    constexpr double relativeGate = 1e-2; // -20 LU
    std::erase_if(powers, [](double power) { return power < absoluteGate; });
    if (powers.empty()) return 0;
    const double gate = relativeGate * std::accumulate(powers.begin(), powers.end(), 0.0) /
                        static_cast<double>(powers.size());
    std::erase_if(powers, [&](double power) { return power < gate; });
    std::ranges::sort(powers);
    const auto at = [&](double share) {
        return powers[static_cast<std::size_t>(std::lround(share * static_cast<double>(powers.size() - 1)))];
    };
    return 10 * std::log10(at(0.95) / at(0.1));
}

} // namespace

struct CLoudness::SNative {
    std::unique_ptr<ebur128_state, SDestroyer> state; ///< null at a rate that the library does not take
    unsigned channels = 0;
    TenthSink onTenth;
    std::size_t tenthFrames = 0;
    std::size_t toTenth = 0; ///< frames until the next one is full
    CLoudestTenths momentary{MomentaryTenths};
    CLoudestTenths shortTerm{ShortTermTenths};
    std::vector<double> shortTerms; ///< powers

    void EndTenth();
};

CLoudness::CLoudness(std::span<const double> weights, int rateHz, TenthSink onTenth)
    : _native(std::make_unique<SNative>()) {
    _native->onTenth = std::move(onTenth);
    _native->tenthFrames = _native->toTenth = LoudnessStepFrames(rateHz);
    _native->channels = static_cast<unsigned>(weights.size());
    _native->state.reset(ebur128_init(_native->channels, static_cast<unsigned long>(rateHz), EBUR128_MODE_I));
    if (!_native->state) return;
    for (unsigned c = 0; c < _native->channels; ++c)
        ebur128_set_channel(_native->state.get(), c, SpeakerOf(weights[c]));
}

CLoudness::CLoudness(CLoudness&&) noexcept = default;
CLoudness::~CLoudness() = default;

void CLoudness::Add(std::span<const float> interleaved) {
    if (!_native->state) return;
    while (!interleaved.empty()) {
        const std::size_t frames = std::min(interleaved.size() / _native->channels, _native->toTenth);
        ebur128_add_frames_float(_native->state.get(), interleaved.data(), frames);
        interleaved = interleaved.subspan(frames * _native->channels);
        if ((_native->toTenth -= frames) == 0) _native->EndTenth();
    }
}

void CLoudness::SNative::EndTenth() {
    toTenth = tenthFrames;
    double lufs = 0;
    if (ebur128_loudness_window(state.get(), TenthMs, &lufs) != EBUR128_SUCCESS) return;
    lufs = Loudness(lufs);
    // The recommendation's constant is the same in each term, so the mean needs none of it.
    const double power = std::pow(10, lufs / 10);
    momentary.Add(power);
    if (const auto mean = shortTerm.Add(power)) shortTerms.push_back(*mean);
    if (onTenth) onTenth(lufs);
}

std::optional<double> CLoudness::IntegratedLufs() const {
    const CLoudness* const self = this;
    return IntegratedLufs(std::span(&self, 1));
}

std::optional<double> CLoudness::IntegratedLufs(std::span<const CLoudness* const> programmes) {
    std::vector<ebur128_state*> states;
    for (const auto* const programme : programmes) {
        if (!programme->_native->state) return {};
        states.push_back(programme->_native->state.get());
    }
    double loudness = 0;
    if (ebur128_loudness_global_multiple(states.data(), states.size(), &loudness) != EBUR128_SUCCESS)
        return {};
    return Loudness(loudness);
}

std::optional<double> CLoudness::RangeLu() const {
    if (_native->shortTerms.empty()) return {};
    return RangeOf(_native->shortTerms);
}

std::optional<double> CLoudness::HighestMomentaryLufs() const {
    return _native->momentary.Lufs();
}

std::optional<double> CLoudness::HighestShortTermLufs() const {
    return _native->shortTerm.Lufs();
}

} // namespace KAV::Host
