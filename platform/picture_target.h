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

/// A window of an X11 display as the graphics hardware's drivers take it.
struct SSystemWindow {
    void* connection = nullptr; ///< the window's own, of XCB; null: there is no such window
    std::int32_t screen = 0;    ///< its number there
    std::uint32_t window = 0;
    std::uint32_t visual = 0;
};

/// A window that a renderer presents to: either it puts finished pictures into it, or it draws into it by
/// itself. Threads: the window's.
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

    /// The window to draw into.
    virtual SSystemWindow System() const noexcept { return {}; }
    /// From now on a renderer draws into this window by itself, or into a child of it that covers it all and
    /// takes no input. Pictures that were put before aren't shown again. 0: it has ended, and the child with
    /// it.
    virtual void SetDrawnWindow(std::uint32_t /*window*/) noexcept {}

protected:
    IPictureTarget() = default;
    ~IPictureTarget() = default;
};

} // namespace KAV::Platform
