#pragma once

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace KAV::Bench {

/// A copy of a window's pixels that aren't in the processor's cache: it goes round through more memory than
/// any cache has.
class CColdCopy final {
public:
    explicit CColdCopy(std::size_t pixels) : _pixels(pixels), _memory(2 * Windows * pixels, 1) {}
    void Copy() {
        std::memcpy(&_memory[2 * _at * _pixels], &_memory[(2 * _at + 1) * _pixels], 4 * _pixels);
        benchmark::ClobberMemory();
        _at = (_at + 1) % Windows;
    }

private:
    static constexpr std::size_t Windows = 40;

    std::size_t _pixels;
    std::vector<std::uint32_t> _memory;
    std::size_t _at = 0;
};

} // namespace KAV::Bench
