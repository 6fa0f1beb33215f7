#pragma once

#include "artwork/geometry.h"

#include <algorithm>
#include <cmath>

namespace KAV::Artwork {

/// Distance to the edge of a rectangle with round corners; negative inside.
inline double RoundBoxDistance(const SRect& rect, double radius, double x, double y) {
    const double dx = std::abs(x - rect.CentreX()) - rect.w / 2 + radius;
    const double dy = std::abs(y - rect.CentreY()) - rect.h / 2 + radius;
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) - radius;
}

/// A rounded edge: 0 where `distance` is 0 or more, `height` from `width` inside on, a quarter of an ellipse
/// between.
inline double RoundedEdge(double distance, double width, double height) {
    const double t = std::clamp(1 + distance / width, 0.0, 1.0);
    return height * std::sqrt(1 - t * t);
}

/// A wall with a chamfer on it that mirrors the studio's lamp where it faces it: `height` from `width` inside
/// on.
inline double ChamferedEdge(double distance, double width, double height) {
    constexpr double wall = 0.25;
    constexpr double slope = 0.5; // half the angle to the lamp
    const double inside = -distance;
    const double foot = height - slope * (width - wall);
    if (inside < wall) return foot * std::clamp(inside / wall, 0.0, 1.0);
    return std::min(height, foot + slope * (inside - wall));
}

} // namespace KAV::Artwork
