#include "artwork/colour.h"

#include <algorithm>
#include <cmath>

namespace KAV::Artwork {

float Decode(float encoded) {
    return encoded <= 0.04045f ? encoded / 12.92f : std::pow((encoded + 0.055f) / 1.055f, 2.4f);
}

float Encode(float light) {
    light = std::clamp(light, 0.0f, 1.0f);
    return light <= 0.0031308f ? light * 12.92f : 1.055f * std::pow(light, 1.0f / 2.4f) - 0.055f;
}

SLight Decode(const SColour& colour) {
    return {Decode(colour.r), Decode(colour.g), Decode(colour.b)};
}

SColour Encode(const SLight& light) {
    return {Encode(light.r), Encode(light.g), Encode(light.b), 1};
}

SColour Mix(const SColour& a, const SColour& b, double t) {
    const auto k = static_cast<float>(t);
    return {a.r + (b.r - a.r) * k, a.g + (b.g - a.g) * k, a.b + (b.b - a.b) * k, a.a + (b.a - a.a) * k};
}

double Luminance(const SColour& colour) {
    const SLight light = Decode(colour);
    return 0.2126 * static_cast<double>(light.r) + 0.7152 * static_cast<double>(light.g) +
           0.0722 * static_cast<double>(light.b);
}

double Contrast(double luminanceA, double luminanceB) {
    return (std::max(luminanceA, luminanceB) + 0.05) / (std::min(luminanceA, luminanceB) + 0.05);
}

} // namespace KAV::Artwork
