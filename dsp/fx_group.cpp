#include "dsp/fx_group.h"

#include "dsp/level.h"

#include <algorithm>

namespace KAV::DSP {

namespace {

constexpr double HighestFactor = 8.0; // of oversampling

} // namespace

double OversampledRate(std::int32_t factor, float rateHz) noexcept {
    return static_cast<double>(factor) * static_cast<double>(rateHz);
}

FxGroup::FxGroup() : _mixSmoother(250.0f, 250.0f, 44100.0f), _parameterSmoother(100.0f, 100.0f, 44100.0f) {
    ReserveRate(_rateHz);
}

void FxGroup::ReserveRate(float rateHz) {
    _limiter.Reserve(static_cast<double>(rateHz) * HighestFactor);
}

void FxGroup::SetSampleRate(float rateHz) {
    if (rateHz == _rateHz) return;
    ReserveRate(rateHz);
    _rateHz = rateHz;
    if (_block != 0) {
        const float blockRate = _rateHz / static_cast<float>(_block);
        _mixSmoother.SetRate(blockRate);
        _parameterSmoother.SetRate(blockRate);
    }
    const double limiterRate = OversampledRate(_factor, _rateHz);
    if (_limiter.Rate() != limiterRate) _limiter.SetRate(limiterRate);
}

void FxGroup::SetBlock(std::size_t length) noexcept {
    if (length == _block) return;
    _block = length;
    const float blockRate = _rateHz / static_cast<float>(_block);
    _mixSmoother.SetRate(blockRate);
    _parameterSmoother.SetRate(blockRate);
}

void FxGroup::Move(const SGroupSettings& settings, std::size_t length, std::int32_t factor) noexcept {
    SetBlock(length);
    if (factor != _factor) {
        _factor = factor;
        const double limiterRate = OversampledRate(_factor, _rateHz);
        if (_limiter.Rate() != limiterRate) _limiter.SetRate(limiterRate);
    }

    const float mix = settings.bypass ? 1.0f : 0.0f;
    _mixPosition = _mixSmoother.Step(_mixPosition, mix);
    if (Move(_inputGain, settings.inputGain)) {
        _gain.gain = static_cast<float>(GainOfDb(20.0 * static_cast<double>(_inputGain) - 20.0));
    }
    bool moved = Move(_threshold, settings.threshold);
    moved |= Move(_ceiling, settings.ceiling);
    moved |= Move(_release, settings.release);
    moved |= _settings.autoRelease != settings.autoRelease;
    if (moved) _limiter.SetParams(_threshold, _ceiling, _release, settings.autoRelease);

    _settings = settings;
    _settled = _mixPosition == mix && _inputGain == settings.inputGain && _threshold == settings.threshold &&
               _ceiling == settings.ceiling && _release == settings.release;
    // From here on the values count as computed: a group without channels must not run its first block again
    // later.
    _firstBlock = false;
}

/// One step of a smoothed position; returns whether values that depend on it have to be computed again.
bool FxGroup::Move(float& position, float target) noexcept {
    if (position == target && !_firstBlock) return false;
    position = _parameterSmoother.Step(position, target);
    return true;
}

void FxGroup::Process(std::span<float* const> channels, const CChannelBuffers& dry) noexcept {
    if (channels.empty() || _mixPosition == 1.0f) return;
    const bool crossfading = _mixPosition != 0.0f;
    if (crossfading) KeepDry(channels, dry);
    if (_settings.midSide == EMidSide::Off || channels.size() < 2) {
        Limit(channels);
    } else {
        LimitMidSide(channels);
    }
    if (crossfading) MixDry(channels, dry);
}

void FxGroup::Limit(std::span<float* const> channels) noexcept {
    AmplifyAndProbe(channels);
    if (_settings.limiter) _limiter.Process(channels, _block, PathFor(_features));
    ReadOutputs(channels);
}

/// If only one half is processed, it takes the first probe and the first delay line; the other half isn't
/// delayed. The output probes measure the halves, not left and right.
void FxGroup::LimitMidSide(std::span<float* const> channels) noexcept {
    EncodeMidSide({channels[0], _block}, channels[1]);
    const EMidSide mode = _settings.midSide;
    const bool sideAlone = mode == EMidSide::Side || mode == EMidSide::SideSolo;
    const auto halves = channels.subspan(sideAlone ? 1 : 0, mode == EMidSide::Both ? 2 : 1);
    AmplifyAndProbe(halves);
    if (_settings.limiter) _limiter.Process(halves, _block, PathFor(_features));
    ReadOutputs(channels);
    DecodeMidSide(mode, {channels[0], _block}, channels[1]);
}

/// One at a time, because a list may contain a buffer twice.
void FxGroup::AmplifyAndProbe(std::span<float* const> channels) noexcept {
    for (float* const channel : channels) _gain.Process({channel, _block});
    for (std::size_t place = 0; place < channels.size(); ++place) {
        inputProbes[place].Read({channels[place], _block});
    }
}

void FxGroup::ReadOutputs(std::span<float* const> channels) noexcept {
    for (std::size_t place = 0; place < channels.size(); ++place) {
        outputProbes[place].Read({channels[place], _block});
    }
}

void FxGroup::KeepDry(std::span<float* const> channels, const CChannelBuffers& dry) const noexcept {
    for (std::size_t place = 0; place < channels.size(); ++place) {
        std::copy_n(channels[place], _block, dry[place]);
    }
}

/// The dry signal is not delayed by the look-ahead: the crossfade is only heard while bypass is being
/// switched.
void FxGroup::MixDry(std::span<float* const> channels, const CChannelBuffers& dry) const noexcept {
    for (std::size_t place = 0; place < channels.size(); ++place) {
        const float* unprocessed = dry[place];
        float* processed = channels[place];
        for (std::size_t i = 0; i < _block; ++i) {
            processed[i] = _mixPosition * unprocessed[i] + (1.0f - _mixPosition) * processed[i];
        }
    }
}

} // namespace KAV::DSP
