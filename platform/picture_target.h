#pragma once

#include <cstdint>
#include <span>

namespace KAV::Platform {

/// A rectangle of whole pixels.
struct SArea {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool operator==(const SArea&) const = default;
};

/// A window that finished pictures are put into: what a software renderer presents to. Threads: the window's.
class IPictureTarget {
public:
    IPictureTarget(const IPictureTarget&) = delete;
    IPictureTarget& operator=(const IPictureTarget&) = delete;

    /// Copies these areas of a picture of `width` by `height` pixels to the same places of the window. Pixels
    /// are 0xAARRGGBB with alpha 0xFF; rows are `stride` bytes apart. The picture isn't needed any more when
    /// this returns. False: nothing was copied, because the display is still busy with earlier pictures or
    /// the window can't be seen; the areas are then due again with the next picture.
    virtual bool Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width,
        std::int32_t height, std::span<const SArea> areas) noexcept = 0;

protected:
    IPictureTarget() = default;
    ~IPictureTarget() = default;
};

} // namespace KAV::Platform
