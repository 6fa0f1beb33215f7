#include "dsp/channel_buffers.h"

#include <new>

namespace KAV::DSP {

namespace {

constexpr std::size_t CacheLine = 64;

} // namespace

void CChannelBuffers::Resize(std::size_t length) {
    std::size_t space = length * Count * sizeof(float) + CacheLine;
    std::unique_ptr<void, SFree> memory(std::calloc(space, 1));
    if (memory == nullptr) throw std::bad_alloc();
    void* first = memory.get();
    std::align(CacheLine, length * Count * sizeof(float), first, space);
    _memory = std::move(memory);
    _first = static_cast<float*>(first);
    _length = length;
}

std::array<float*, CChannelBuffers::Count> CChannelBuffers::All() const noexcept {
    std::array<float*, Count> all{};
    for (std::size_t channel = 0; channel < Count; ++channel) all[channel] = (*this)[channel];
    return all;
}

} // namespace KAV::DSP
