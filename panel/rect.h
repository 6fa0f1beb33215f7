#pragma once

namespace KAV::Panel {

/// A rectangle in panel pixels, y downwards.
struct SRect {
    double x = 0;
    double y = 0;
    double w = 0;
    double h = 0;

    constexpr double Right() const noexcept { return x + w; }
    constexpr double Bottom() const noexcept { return y + h; }
    constexpr double CentreX() const noexcept { return x + w / 2; }
    constexpr double CentreY() const noexcept { return y + h / 2; }
    constexpr SRect Inset(double by) const noexcept { return {x + by, y + by, w - 2 * by, h - 2 * by}; }
    constexpr SRect Moved(double dx, double dy) const noexcept { return {x + dx, y + dy, w, h}; }
    constexpr bool operator==(const SRect&) const = default;
};

} // namespace KAV::Panel
