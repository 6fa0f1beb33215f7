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

CGainMeter::CGainMeter(std::span<const double> idleGainsDb, int rateHz, WindowSink onWindow)
    : _idleGainsDb(idleGainsDb.begin(), idleGainsDb.end()), _onWindow(std::move(onWindow)),
      _windowFrames(GainWindowFrames(rateHz)), _input{std::vector<double>(idleGainsDb.size()), 0},
      _output(_input) {}

void CGainMeter::AddInput(std::span<const float> interleaved) {
    Add(_input, interleaved, _inputs);
}

void CGainMeter::AddOutput(std::span<const float> interleaved) {
    Add(_output, interleaved, _outputs);
}

void CGainMeter::Add(SWindow& window, std::span<const float> interleaved, std::deque<double>& full) {
    const std::size_t channels = window.energies.size();
    while (interleaved.size() >= channels) {
        const std::size_t frames = std::min(_windowFrames - window.frames, interleaved.size() / channels);
        for (std::size_t c = 0; c < channels; ++c) {
            double energy = window.energies[c];
            for (std::size_t i = c; i < frames * channels; i += channels) {
                const double sample = static_cast<double>(interleaved[i]);
                energy += sample * sample;
            }
            window.energies[c] = energy;
        }
        interleaved = interleaved.subspan(frames * channels);
        window.frames += frames;
        if (window.frames < _windowFrames) return;
        {
            const std::lock_guard lock(_mutex);
            full.insert(full.end(), window.energies.begin(), window.energies.end());
            Compare();
        }
        std::ranges::fill(window.energies, 0.0);
        window.frames = 0;
    }
}

/// While both sides have a window.
void CGainMeter::Compare() {
    const std::size_t channels = _idleGainsDb.size();
    while (_inputs.size() >= channels && _outputs.size() >= channels) {
        const std::int64_t frame = _compared++ * static_cast<std::int64_t>(_windowFrames);
        _gains.assign(channels, std::numeric_limits<double>::quiet_NaN());
        double largest = 0;
        for (std::size_t c = 0; c < channels; ++c) {
            const double input = _inputs.front(), output = _outputs.front();
            _inputs.pop_front();
            _outputs.pop_front();
            if (input < LeastPower * static_cast<double>(_windowFrames)) continue;
            if (!std::isfinite(input) || !std::isfinite(output)) continue;
            _gains[c] = 10 * std::log10(output / input);
            Note(_gains[c], frame);
            if (output > 0) largest = std::max(largest, _idleGainsDb[c] - _gains[c]);
        }
        NoteReduction(largest, frame);
        if (_onWindow) _onWindow(_gains);
    }
}

void CGainMeter::NoteReduction(double largest, std::int64_t frame) {
    if (largest > _reduction.largestDb) {
        _reduction.largestDb = largest;
        _reduction.largestFrame = frame;
    }
    if (largest > 1) ++_over1;
    if (largest > 3) ++_over3;
    if (largest > 6) ++_over6;
}

std::optional<SReduction> CGainMeter::Reduction() const {
    if (!_range) return std::nullopt;
    auto reduction = _reduction;
    const auto windows = static_cast<double>(_compared);
    reduction.over1Db = static_cast<double>(_over1) / windows;
    reduction.over3Db = static_cast<double>(_over3) / windows;
    reduction.over6Db = static_cast<double>(_over6) / windows;
    return reduction;
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
