#include "tools/kavhost/audio/planar_buffer.h"

#include <algorithm>

namespace KAV::Host {

CPlanarBuffer::CPlanarBuffer(std::size_t channels, std::size_t frames)
    : _frames(frames), _samples(channels * frames), _channels(channels) {
    for (std::size_t c = 0; c < channels; ++c) _channels[c] = _samples.data() + c * frames;
}

void CPlanarBuffer::Clear() noexcept {
    std::ranges::fill(_samples, 0.0f);
}

void CPlanarBuffer::TakeInterleaved(std::span<const float> interleaved, std::size_t first) noexcept {
    const std::size_t channels = _channels.size();
    const std::size_t frames = interleaved.size() / channels;
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t i = 0; i < frames; ++i) _channels[c][first + i] = interleaved[i * channels + c];
    }
}

void CPlanarBuffer::GiveInterleaved(std::span<float> interleaved, std::size_t first) const noexcept {
    const std::size_t channels = _channels.size();
    const std::size_t frames = interleaved.size() / channels;
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t i = 0; i < frames; ++i) interleaved[i * channels + c] = _channels[c][first + i];
    }
}

void CPlanarBuffer::CopyFrom(const CPlanarBuffer& other) noexcept {
    std::ranges::copy(other._samples, _samples.begin());
}

} // namespace KAV::Host
