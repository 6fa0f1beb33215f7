#include "tools/kavhost/measure/loudness.h"

#include "tools/kavhost/measure/timeline.h"

#include <algorithm>
#include <ebur128.h>
#include <limits>
#include <utility>

namespace KAV::Host {

namespace {

constexpr unsigned long TenthMs = 100;

/// The library has a number of its own for silence.
double Loudness(double lufs) noexcept {
    return lufs <= std::numeric_limits<double>::lowest() ? -std::numeric_limits<double>::infinity() : lufs;
}

struct SDestroyer {
    void operator()(ebur128_state* state) const noexcept { ebur128_destroy(&state); }
};

} // namespace

struct CLoudness::SNative {
    std::unique_ptr<ebur128_state, SDestroyer> state;
    unsigned channels = 0;
    TenthSink onTenth;
    std::size_t tenthFrames = 0;
    std::size_t toTenth = 0; ///< frames until the next one is full
};

CLoudness::CLoudness(int channels, int rateHz, TenthSink onTenth) : _native(std::make_unique<SNative>()) {
    _native->onTenth = std::move(onTenth);
    _native->tenthFrames = _native->toTenth = LoudnessStepFrames(rateHz);
    // The library's own idea of the speakers: left, right, centre, (low frequencies), the surrounds; from the
    // seventh channel on they count for peaks only.
    _native->channels = static_cast<unsigned>(channels);
    _native->state.reset(ebur128_init(
        _native->channels, static_cast<unsigned long>(rateHz), EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK));
}

CLoudness::~CLoudness() = default;

void CLoudness::Add(std::span<const float> interleaved) {
    if (!_native->state) return; // a rate that the library does not take
    auto* const state = _native->state.get();
    while (!interleaved.empty()) {
        std::size_t frames = interleaved.size() / _native->channels;
        if (_native->onTenth) frames = std::min(frames, _native->toTenth);
        ebur128_add_frames_float(state, interleaved.data(), frames);
        interleaved = interleaved.subspan(frames * _native->channels);
        if (!_native->onTenth || (_native->toTenth -= frames) > 0) continue;
        _native->toTenth = _native->tenthFrames;
        double lufs = 0;
        if (ebur128_loudness_window(state, TenthMs, &lufs) != EBUR128_SUCCESS) continue;
        _native->onTenth(Loudness(lufs));
    }
}

std::optional<double> CLoudness::TruePeak() const {
    double highest = 0;
    for (unsigned c = 0; c < _native->channels; ++c) {
        double peak = 0;
        if (!_native->state || ebur128_true_peak(_native->state.get(), c, &peak) != EBUR128_SUCCESS)
            return {};
        highest = std::max(highest, peak);
    }
    return highest;
}

std::optional<double> CLoudness::IntegratedLufs() const {
    double loudness = 0;
    if (!_native->state || ebur128_loudness_global(_native->state.get(), &loudness) != EBUR128_SUCCESS)
        return {};
    return Loudness(loudness);
}

} // namespace KAV::Host
