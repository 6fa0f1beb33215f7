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

/// A straight bevel of the same extent.
inline double Bevel(double distance, double width, double height) {
    return height * std::clamp(-distance / width, 0.0, 1.0);
}

} // namespace KAV::Artwork
