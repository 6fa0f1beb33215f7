#include "tools/kavhost/measure/gain_meter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace KAV::Host {

namespace {

constexpr double LeastPower = 1e-6; // -60 dBFS of RMS

}

std::size_t GainWindowFrames(int rateHz) noexcept {
    return static_cast<std::size_t>(std::max(1, rateHz / 100));
}

CGainMeter::CGainMeter(int channels, int rateHz, WindowSink onWindow)
    : _onWindow(std::move(onWindow)),
      _windowFrames(GainWindowFrames(rateHz)), _input{std::vector<double>(static_cast<std::size_t>(channels)),
                                                   0},
      _output(_input) {}

void CGainMeter::AddInput(std::span<const float> interleaved) {
    Add(_input, interleaved, [this](const std::vector<double>& energies) {
        _waiting.insert(_waiting.end(), energies.begin(), energies.end());
    });
}

void CGainMeter::AddOutput(std::span<const float> interleaved) {
    Add(_output, interleaved, [this](const std::vector<double>& energies) { Compare(energies); });
}

template<typename FULL>
void CGainMeter::Add(SWindow& window, std::span<const float> interleaved, FULL onFull) {
    const std::size_t channels = window.energies.size();
    for (std::size_t i = 0; i + channels <= interleaved.size(); i += channels) {
        for (std::size_t c = 0; c < channels; ++c) {
            const double sample = static_cast<double>(interleaved[i + c]);
            window.energies[c] += sample * sample;
        }
        if (++window.frames == _windowFrames) {
            onFull(window.energies);
            std::ranges::fill(window.energies, 0.0);
            window.frames = 0;
        }
    }
}

void CGainMeter::Compare(std::span<const double> outputs) {
    const std::int64_t frame = _compared++ * static_cast<std::int64_t>(_windowFrames);
    if (_waiting.size() < outputs.size()) return; // the output is the longer
    _gains.assign(outputs.size(), std::numeric_limits<double>::quiet_NaN());
    for (std::size_t c = 0; c < outputs.size(); ++c) {
        const double input = _waiting.front();
        _waiting.pop_front();
        if (input < LeastPower * static_cast<double>(_windowFrames)) continue;
        if (!std::isfinite(input) || !std::isfinite(outputs[c])) continue;
        _gains[c] = 10 * std::log10(outputs[c] / input);
        Note(_gains[c], frame);
    }
    if (_onWindow) _onWindow(_gains);
}

void CGainMeter::Note(double gain, std::int64_t frame) {
    if (!_range) _range = SGainRange{gain, gain, frame, frame};
    if (gain < _range->lowest) {
        _range->lowest = gain;
        _range->lowestFrame = frame;
    }
    if (gain > _range->highest) {
        _range->highest = gain;
        _range->highestFrame = frame;
    }
}

} // namespace KAV::Host
