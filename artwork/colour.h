#pragma once

#include <cstdint>

namespace KAV::Artwork {

/// A colour as screens encode it (sRGB), 0..1 per channel.
struct SColour {
    float r = 0;
    float g = 0;
    float b = 0;
    float a = 1;

    constexpr SColour WithAlpha(double alpha) const { return {r, g, b, static_cast<float>(alpha)}; }
};

/// 0xRRGGBB.
constexpr SColour Hex(std::uint32_t rgb) {
    return {static_cast<float>(rgb >> 16 & 0xFF) / 255.0f, static_cast<float>(rgb >> 8 & 0xFF) / 255.0f,
        static_cast<float>(rgb & 0xFF) / 255.0f};
}

/// Light itself, in which sums and averages are physical.
struct SLight {
    float r = 0;
    float g = 0;
    float b = 0;
};

constexpr SLight operator+(SLight a, SLight b) {
    return {a.r + b.r, a.g + b.g, a.b + b.b};
}
constexpr SLight operator*(SLight a, SLight b) {
    return {a.r * b.r, a.g * b.g, a.b * b.b};
}
constexpr SLight operator*(SLight a, float k) {
    return {a.r * k, a.g * k, a.b * k};
}

/// From the screen's encoding to light, and back; negative light gives 0, light above 1 gives 1.
float Decode(float encoded);
float Encode(float light);
SLight Decode(const SColour& colour);
SColour Encode(const SLight& light);

/// Between two colours as screens blend them; `t` 0 gives `a`.
SColour Mix(const SColour& a, const SColour& b, double t);

/// Relative luminance, 0..1, and the contrast of two luminances, 1..21, as WCAG 2 defines them.
double Luminance(const SColour& colour);
double Contrast(double luminanceA, double luminanceB);

} // namespace KAV::Artwork
