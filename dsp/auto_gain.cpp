#include "dsp/auto_gain.h"

#include "dsp/level.h"

#include <algorithm>
#include <cmath>

namespace KAV::DSP {

namespace {

constexpr double BallisticsPerTime = 5.55; // time of the gain's own ramp, relative to that of the windows
constexpr double Settled = 0.0001;         // distance from equal loudness at which adjusting ends

/// A patch may contain any number, but a window needs a time of 0 or more.
double TimeOf(const AutoGainSettings& settings) noexcept {
    const double timeMs = settings.rmsTime;
    return timeMs > 0.0 ? timeMs : 0.0;
}

float PositionOf(double gain) noexcept {
    const double db = gain > 0.0 ? 20.0 * std::log10(gain) : -999.9;
    return static_cast<float>(std::clamp((db + 24.0) / 48.0, 0.0, 1.0));
}

} // namespace

/// The settings of a block, linear.
struct AutoGain::SLimits {
    double minimumGain;
    double maximumGain;
    double suspend; // 0: never
    double high;
    double low;

    explicit SLimits(const AutoGainSettings& settings) noexcept
        : minimumGain(GainOfDb(-settings.maximumCut)), maximumGain(GainOfDb(settings.maximumGain)),
          suspend(settings.suspendLevel == 0.0 ? 0.0 : GainOfDb(settings.suspendLevel)),
          high(GainOfDb(settings.tolerance)), low(1.0 / high) {}
};

void AutoGain::SetRate(float rateHz) {
    if (rateHz != _rateHz) {
        const double rate = static_cast<double>(rateHz);
        auto input = _inputWindow.WithRate(rate);
        auto output = _outputWindow.WithRate(rate);
        auto corrected = _correctedWindow.WithRate(rate);
        _inputWindow = std::move(input);
        _outputWindow = std::move(output);
        _correctedWindow = std::move(corrected);
        _rateHz = rateHz;
    }
    _weighting = SKWeighting(static_cast<double>(rateHz));
    _ballistics.SetRate(rateHz);
}

void AutoGain::Reserve(std::size_t frames) {
    if (frames != _copies.Length()) _copies.Resize(frames);
}

void AutoGain::Prepare(const AutoGainSettings& settings, bool disabled, bool autoOn,
    std::span<float* const> channels, std::size_t frames) noexcept {
    _autoOn = autoOn;
    const double timeMs = TimeOf(settings);
    for (RmsWindow* window : {&_inputWindow, &_outputWindow, &_correctedWindow}) window->SetTime(timeMs);
    const float rampMs = static_cast<float>(timeMs * BallisticsPerTime);
    _ballistics.SetTimes(rampMs, rampMs);
    if (disabled != _disabled) {
        _refresh = true;
        _disabled = disabled;
        if (disabled) {
            _ratio = _correctedRatio = 1.0;
            for (auto& filter : _inputFilters) filter.Clear();
            for (auto& filter : _outputFilters) filter.Clear();
        }
    }
    if (_disabled) return;
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        if (channels[channel] != nullptr) std::copy_n(channels[channel], frames, _copies[channel]);
    }
}

bool AutoGain::Run(const AutoGainSettings& settings, std::span<float* const> channels,
    std::span<const bool> used, std::size_t frames, float& position) noexcept {
    const SLimits limits(settings);
    const bool filter = settings.filter != 0;
    std::array<std::size_t, MaxChannels> numbers{};
    std::array<const float*, MaxChannels> inputs{};
    std::size_t count = 0;
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        inputs[channel] = _copies[channel];
        if (channels[channel] != nullptr && used[channel]) numbers[count++] = channel;
    }
    const auto measured = std::span(numbers).first(count);
    const auto values = std::span(_values).first(count);

    double current = GainOfDb(48.0 * static_cast<double>(position) - 24.0);
    if (!_autoOn) _gain = current;
    bool moved = false;
    for (std::size_t i = 0; i < frames; ++i) {
        const double input = _inputWindow.Rms();
        _ratio = input / _outputWindow.Rms();
        _correctedRatio = input / _correctedWindow.Rms();
        if (_autoOn && (_adjusting || _correctedRatio < limits.low || _correctedRatio > limits.high)) {
            Adjust(limits, current, position);
            moved = true;
        }
        const bool measures = count > 0 && !(limits.suspend != 0.0 && IsQuiet(measured, i, limits.suspend));
        Measure(_inputFilters, filter, measured, inputs, i);
        if (measures) _inputWindow.Push(values, 1.0);
        Measure(_outputFilters, filter, measured, channels, i);
        if (measures) {
            _outputWindow.Push(values, 1.0);
            _correctedWindow.Push(values, current);
        }
        for (float* const channel : channels) {
            if (channel != nullptr)
                channel[i] = static_cast<float>(static_cast<double>(channel[i]) * current);
        }
    }
    Recover();
    return moved;
}

void AutoGain::Adjust(const SLimits& limits, double& current, float& position) noexcept {
    if (_ratio != _gain) {
        const float kept = _ratio > _gain ? _ballistics.RiseCoefficient() : _ballistics.FallCoefficient();
        const auto c = static_cast<double>(kept);
        _gain = (1.0 - c) * _ratio + c * _gain;
    }
    current = _gain < limits.minimumGain ? limits.minimumGain : std::min(limits.maximumGain, _gain);
    position = PositionOf(current);
    _adjusting = std::fabs(1.0 - _correctedRatio) > Settled;
}

void AutoGain::Measure(CBank& bank, bool filter, std::span<const std::size_t> used,
    std::span<const float* const> channels, std::size_t i) noexcept {
    for (std::size_t place = 0; place < used.size(); ++place) {
        const std::size_t channel = used[place];
        const auto x = static_cast<double>(channels[channel][i]);
        _values[place] = filter ? bank[channel].Filter(_weighting, x) : x;
    }
}

/// Judges the raw samples, not the loudness, so that all three windows stop at once when a stretch is quiet.
bool AutoGain::IsQuiet(std::span<const std::size_t> used, std::size_t i, double level) const noexcept {
    return std::all_of(used.begin(), used.end(),
        [&](std::size_t channel) { return std::fabs(static_cast<double>(_copies[channel][i])) <= level; });
}

/// Restarts whatever contains not-a-number or infinity, so that clean sound is measured again.
void AutoGain::Recover() noexcept {
    for (RmsWindow* window : {&_inputWindow, &_outputWindow, &_correctedWindow}) window->Recover();
    for (CBank* bank : {&_inputFilters, &_outputFilters}) {
        for (auto& filter : *bank) {
            if (!filter.IsFinite()) filter.Clear();
        }
    }
    if (!std::isfinite(_gain)) _gain = 1.0;
}

} // namespace KAV::DSP
