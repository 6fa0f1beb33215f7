#include "dsp/oversampler.h"

#include <algorithm>

namespace KAV::DSP {

Oversampler::Oversampler() noexcept : _standardUp(4), _standardDown(4), _qualityUp(32), _qualityDown(32) {
    Design();
}

void Oversampler::SetSampleRate(float rateHz) noexcept {
    if (rateHz == _rateHz) return;
    _rateHz = rateHz;
    Design();
}

void Oversampler::Reserve(std::size_t frames) {
    const std::size_t length = frames * static_cast<std::size_t>(MaxFactor);
    if (length > _raised.Length()) _raised.Resize(length);
}

void Oversampler::SetFactor(std::int32_t factor) noexcept {
    if (factor == _factor) return;
    _factor = factor;
    Design();
}

void Oversampler::Design() noexcept {
    // The oversampled rate is a single-precision product; everything else is in double precision.
    const double raisedRate = static_cast<double>(static_cast<float>(_factor) * _rateHz);
    const double standard = static_cast<double>(_rateHz) * 0.9 * 0.5 / raisedRate;
    const double quality = static_cast<double>(_rateHz) * 0.99 * 0.5 / raisedRate;
    _standardUp.Design(standard);
    _standardDown.Design(standard);
    _qualityUp.Design(quality);
    _qualityDown.Design(quality);
}

void Oversampler::Up(std::span<float*> channels, std::size_t frames) noexcept {
    std::copy(channels.begin(), channels.end(), _in.begin());
    _frames = frames;
    if (_factor == 1) return;
    const auto factor = static_cast<std::size_t>(_factor);
    const float makeUp =
        static_cast<float>(_factor); // zero-stuffing spreads each sample over `factor` places
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        if (channels[channel] == nullptr) continue;
        float* raised = _raised[channel];
        std::fill_n(raised, frames * factor, 0.0f);
        for (std::size_t i = 0; i < frames; ++i) raised[i * factor] = makeUp * channels[channel][i];
        channels[channel] = raised;
    }
    Filter(_highQuality ? _qualityUp : _standardUp, frames * factor);
}

void Oversampler::Down(std::span<float*> channels) noexcept {
    if (_factor != 1) {
        const auto factor = static_cast<std::size_t>(_factor);
        Filter(_highQuality ? _qualityDown : _standardDown, _frames * factor);
        for (std::size_t channel = 0; channel < MaxChannels; ++channel) {
            if (_in[channel] == nullptr) continue;
            const float* raised = _raised[channel];
            for (std::size_t i = 0; i < _frames; ++i) _in[channel][i] = raised[i * factor];
        }
    }
    _frames = 0;
    std::copy_n(_in.begin(), channels.size(), channels.begin());
    _in.fill(nullptr);
}

/// Runs the raised channels of the block through `cascade`, except those that are left out.
void Oversampler::Filter(BiquadCascade& cascade, std::size_t length) noexcept {
    std::array<float*, MaxChannels> present{};
    std::size_t count = 0;
    for (std::size_t channel = 0; channel < MaxChannels; ++channel) {
        if (_in[channel] != nullptr) present[count++] = _raised[channel];
    }
    cascade.Process(std::span(present.data(), count), length, _features);
}

} // namespace KAV::DSP
