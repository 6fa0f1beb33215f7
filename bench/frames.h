#pragma once

#include "platform/picture_target.h"

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace KAV::Bench {

/// The window's side of a frame: it copies the pixels that it gets, as into shared memory, and counts.
class CCopyingTarget final : public Platform::IPictureTarget {
public:
    bool Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width, std::int32_t height,
        std::span<const Platform::SArea> areas) noexcept override {
        ++puts;
        _pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        for (const auto& area : areas) {
            for (std::int32_t y = area.top; y < area.top + area.height; ++y) {
                const auto at = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                static_cast<std::size_t>(area.left);
                std::memcpy(&_pixels[at], pixels + y * (stride / 4) + area.left,
                    4 * static_cast<std::size_t>(area.width));
            }
            copied += static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height);
        }
        return true;
    }

    std::size_t puts = 0;
    std::size_t copied = 0; ///< pixels

private:
    std::vector<std::uint32_t> _pixels;
};

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
