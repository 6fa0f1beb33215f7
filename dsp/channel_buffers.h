#pragma once

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>

namespace KAV::DSP {

/// Sixteen float buffers of one length in one piece of memory. Threads: Resize() while audio is stopped; then
/// any one thread.
class CChannelBuffers final {
public:
    static constexpr std::size_t Count = 16;
    /// This many samples of each buffer are in memory from the start: 8192 frames at the highest oversampling
    /// factor. Memory past them is only used once it is touched, so a host that announces very long blocks
    /// but never sends them pays little.
    static constexpr std::size_t ResidentLength = std::size_t{8192} * 8;

    /// Frees the old memory and makes all buffers `length` samples of 0. Throws std::bad_alloc, and then the
    /// buffers are as they were.
    void Resize(std::size_t length);

    std::size_t Length() const noexcept { return _length; }
    float* operator[](std::size_t channel) const noexcept { return _first + channel * _length; }
    /// The buffers' addresses, one after the other.
    std::array<float*, Count> All() const noexcept;

private:
    void Touch() noexcept;

    struct SFree {
        void operator()(void* memory) const noexcept { std::free(memory); }
    };

    std::unique_ptr<void, SFree> _memory;
    float* _first = nullptr; // in _memory, on a cache line's start
    std::size_t _length = 0;
};

} // namespace KAV::DSP
