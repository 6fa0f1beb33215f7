#pragma once

#include "artwork/material.h"

#include <algorithm>

namespace KAV::Artwork {

inline constexpr double Pi = 3.14159265358979323846;

/// A direction, x to the right, y down, z towards the eye.
struct SVector {
    float x = 0;
    float y = 0;
    float z = 0;
};

/// Where the lamp hangs: a large soft panel above left. Unit length.
inline constexpr double LampX = -0.42;
inline constexpr double LampY = -0.63;
inline constexpr double LampZ = 0.653;

SVector Normalised(const SVector& v);

/// What the eye, straight above, sees of a point under the studio's light. `sky` and `lamp` say how much of
/// them the point is exposed to, 0..1; `groove` is the direction across the grooves of a machined material.
SLight Shade(const SMaterial& material, const SVector& normal, const SVector& groove, float sky, float lamp);

/// 0 below `from`, 1 above `to`, smooth between.
inline double SmoothStep(double from, double to, double x) {
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

} // namespace KAV::Artwork
