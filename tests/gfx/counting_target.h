#pragma once

#include "platform/picture_target.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace KAV::Tests {

/// A window that keeps what it shows, and counts.
class CCountingTarget final : public Platform::IPictureTarget {
public:
    bool Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width, std::int32_t height,
        std::span<const Platform::SArea> given) noexcept override {
        ++puts;
        areas.assign(given.begin(), given.end());
        if (isBusy) return false;
        const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        if (shown.size() != size) shown.assign(size, 0xDEADBEEF);
        for (const auto& area : given) {
            for (std::int32_t y = area.top; y < area.top + area.height; ++y) {
                for (std::int32_t x = area.left; x < area.left + area.width; ++x) {
                    shown[static_cast<std::size_t>(y * width + x)] =
                        pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(stride / 4) +
                               static_cast<std::size_t>(x)];
                }
            }
        }
        return true;
    }
    std::int64_t PutPixels() const {
        std::int64_t sum = 0;
        for (const auto& area : areas) sum += std::int64_t{area.width} * area.height;
        return sum;
    }

    int puts = 0;
    bool isBusy = false;
    std::vector<Platform::SArea> areas; // of the last call
    std::vector<std::uint32_t> shown;
};

} // namespace KAV::Tests
