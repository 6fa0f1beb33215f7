#pragma once

#include "platform/picture_target.h"

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

} // namespace KAV::Bench
