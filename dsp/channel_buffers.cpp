#include "dsp/channel_buffers.h"

#include <algorithm>
#include <new>

namespace KAV::DSP {

namespace {

constexpr std::size_t CacheLine = 64;
constexpr std::size_t SmallestPage = 4096 / sizeof(float); // samples

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
    Touch();
}

/// The system provides memory for a page when it is first written to, which may take longer than a short
/// block. So the pages are written here, not on the audio thread.
void CChannelBuffers::Touch() noexcept {
    const std::size_t resident = std::min(_length, ResidentLength);
    if (resident == 0) return;
    for (std::size_t channel = 0; channel < Count; ++channel) {
        volatile float* const samples =
            (*this)[channel]; // volatile, or the compiler would leave the zeros out
        for (std::size_t i = 0; i < resident; i += SmallestPage) samples[i] = 0.0f;
        samples[resident - 1] = 0.0f;
    }
}

std::array<float*, CChannelBuffers::Count> CChannelBuffers::All() const noexcept {
    std::array<float*, Count> all{};
    for (std::size_t channel = 0; channel < Count; ++channel) all[channel] = (*this)[channel];
    return all;
}

} // namespace KAV::DSP
