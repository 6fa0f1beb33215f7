#include "pixels/blur.h"

#include <algorithm>
#include <cstddef>

namespace KAV::Pixels {

namespace {

struct SGrid {
    std::span<std::uint8_t> bits;
    std::int32_t width;
    std::int32_t height;
    std::int32_t stride;
    std::int32_t pixelBytes;
    std::int32_t channels;

    std::uint8_t* Row(std::int32_t y) const noexcept {
        const auto row = static_cast<std::size_t>(std::clamp(y, 0, height - 1));
        return bits.data() + row * static_cast<std::size_t>(stride);
    }
    std::ptrdiff_t Column(std::int32_t x) const noexcept {
        return static_cast<std::ptrdiff_t>(std::clamp(x, 0, width - 1)) * pixelBytes;
    }
};

void Pass(const SGrid& grid, std::int32_t distance) noexcept {
    for (std::int32_t y = 0; y < grid.height; ++y) {
        const std::uint8_t* const above = grid.Row(y - distance);
        const std::uint8_t* const below = grid.Row(y + distance);
        std::uint8_t* const row = grid.Row(y);
        for (std::int32_t x = 0; x < grid.width; ++x) {
            const auto left = grid.Column(x - distance);
            const auto right = grid.Column(x + distance);
            std::uint8_t* const pixel = row + grid.Column(x);
            for (std::int32_t c = 0; c < grid.channels; ++c) {
                const int sum = above[left + c] + above[right + c] + below[left + c] + below[right + c];
                pixel[c] = static_cast<std::uint8_t>(sum / 4);
            }
        }
    }
}

} // namespace

void Blur(std::span<std::uint8_t> bits, std::int32_t width, std::int32_t height, std::int32_t radius,
    std::int32_t stride, bool alpha) noexcept {
    if (width <= 0 || height <= 0) return;
    const std::int32_t pixelBytes = stride / width;
    const SGrid grid{bits, width, height, stride, pixelBytes, std::min(alpha ? 4 : 3, pixelBytes)};
    for (std::int32_t distance = 1; distance <= radius; ++distance) Pass(grid, distance);
}

} // namespace KAV::Pixels
