#include "tools/kavhost/loudness.h"

#include <algorithm>
#include <ebur128.h>
#include <limits>

namespace KAV::Host {

namespace {

struct SDestroyer {
    void operator()(ebur128_state* state) const noexcept { ebur128_destroy(&state); }
};

} // namespace

struct CLoudness::SNative {
    std::unique_ptr<ebur128_state, SDestroyer> state;
    unsigned channels = 0;
};

CLoudness::CLoudness(int channels, int rateHz) : _native(std::make_unique<SNative>()) {
    // The library's own idea of the speakers: left, right, centre, (low frequencies), the surrounds; from the
    // seventh channel on they count for peaks only.
    _native->channels = static_cast<unsigned>(channels);
    _native->state.reset(ebur128_init(
        _native->channels, static_cast<unsigned long>(rateHz), EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK));
}

CLoudness::~CLoudness() = default;

void CLoudness::Add(std::span<const float> interleaved) {
    if (!_native->state) return; // a rate that the library does not take
    ebur128_add_frames_float(
        _native->state.get(), interleaved.data(), interleaved.size() / _native->channels);
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
    return loudness <= std::numeric_limits<double>::lowest() ? -std::numeric_limits<double>::infinity()
                                                             : loudness;
}

} // namespace KAV::Host
