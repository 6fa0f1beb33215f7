#pragma once

namespace KAV::Artwork {

/// A rectangle in panel pixels, y downwards.
struct SRect {
    double x = 0;
    double y = 0;
    double w = 0;
    double h = 0;

    constexpr double Right() const { return x + w; }
    constexpr double Bottom() const { return y + h; }
    constexpr double CentreX() const { return x + w / 2; }
    constexpr double CentreY() const { return y + h / 2; }
    constexpr SRect Inset(double by) const { return {x + by, y + by, w - 2 * by, h - 2 * by}; }
    constexpr SRect Moved(double dx, double dy) const { return {x + dx, y + dy, w, h}; }
};

} // namespace KAV::Artwork
