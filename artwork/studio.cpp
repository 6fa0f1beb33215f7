#include "artwork/studio.h"

#include <array>
#include <cmath>

namespace KAV::Artwork {

namespace {

/// A soft light of the studio as a mirror sees it: brightest in one direction, falling off like a bell.
struct SLobe {
    SVector direction;
    float strength = 0;
    float sharpness = 1;
};

/// The lamp, the ceiling around it, a weak reflector from below right, and one that gives metal edges a line.
constexpr std::array Lobes{
    SLobe{{-0.42f, -0.63f, 0.653f}, 3.1f, 13.0f},
    SLobe{{-0.10f, -0.45f, 0.887f}, 0.27f, 3.0f},
    SLobe{{0.62f, 0.55f, 0.559f}, 0.26f, 7.0f},
    SLobe{{-0.80f, -0.10f, 0.592f}, 0.22f, 9.0f},
};
constexpr float Floor = 0.045f;

float Dot(const SVector& a, const SVector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// Light that comes back from direction `r` off a surface of this roughness: each bell grows wider and lower.
float Mirrored(const SVector& r, float roughness) {
    const float alpha = roughness * roughness;
    float sum = Floor;
    for (const auto& lobe : Lobes) {
        const float wide = 1 / (1 / lobe.sharpness + 0.6f * alpha);
        sum += lobe.strength * (wide / lobe.sharpness) * std::exp(wide * (Dot(lobe.direction, r) - 1));
    }
    return sum;
}

SVector Reflected(const SVector& n) {
    return {2 * n.z * n.x, 2 * n.z * n.y, 2 * n.z * n.z - 1};
}

/// Grooves tilt the surface to both sides: the mean over their slopes.
float MirroredByGrooves(const SMaterial& material, const SVector& n, const SVector& groove) {
    constexpr std::array<float, 9> tilts{-1.6f, -1.2f, -0.8f, -0.4f, 0.0f, 0.4f, 0.8f, 1.2f, 1.6f};
    float sum = 0;
    float weights = 0;
    for (const float tilt : tilts) {
        const float weight = std::exp(-tilt * tilt);
        const float slope = tilt * material.grainSpread;
        const SVector tilted = Normalised({n.x + groove.x * slope, n.y + groove.y * slope, n.z});
        sum += weight * Mirrored(Reflected(tilted), material.roughness);
        weights += weight;
    }
    return sum / weights;
}

} // namespace

SVector Normalised(const SVector& v) {
    const float length = std::sqrt(Dot(v, v));
    return {v.x / length, v.y / length, v.z / length};
}

SLight Shade(const SMaterial& material, const SVector& normal, const SVector& groove, float sky, float lamp) {
    const SLight colour = Decode(material.colour);
    const SVector toLamp{static_cast<float>(LampX), static_cast<float>(LampY), static_cast<float>(LampZ)};
    // Scaled so that a flat, free surface shows its own colour.
    const float facing = std::max(0.0f, Dot(normal, toLamp) * 0.85f + 0.15f) / 0.705f;
    const float upward = 0.75f - 0.25f * normal.y;
    const float diffuse = 0.72f * facing * lamp + 0.28f * upward / 0.75f * sky;

    const float mirrored = material.grain == EGrain::None ? Mirrored(Reflected(normal), material.roughness)
                                                          : MirroredByGrooves(material, normal, groove);
    const float seen = mirrored * (0.25f + 0.75f * sky) * (0.45f + 0.55f * lamp);
    const float away = 1 - std::max(0.0f, normal.z);
    const float fresnel = 0.04f + 0.5f * away * away * away;
    const SLight lacquer = colour * diffuse + SLight{1, 1, 1} * (fresnel * material.sheen * seen);
    const SLight metal = colour * seen;
    return lacquer * (1 - material.metal) + metal * material.metal + colour * material.glow;
}

} // namespace KAV::Artwork
