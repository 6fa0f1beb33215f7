#include "artwork/bitmap.h"

#include <algorithm>
#include <cmath>

namespace KAV::Artwork {

namespace {

/// Noise in -1..1 that depends on the place alone, denser around 0.
float Noise(int x, int y) {
    const auto hash = [](std::uint32_t n) {
        n = (n ^ (n >> 16)) * 0x7FEB352DU;
        n = (n ^ (n >> 15)) * 0x846CA68BU;
        return n ^ (n >> 16);
    };
    const std::uint32_t n =
        hash(static_cast<std::uint32_t>(x) + hash(static_cast<std::uint32_t>(y) + 0x9E3779B9U));
    return (static_cast<float>(n & 0xFFFF) + static_cast<float>(n >> 16)) / 65535.0f - 1;
}

std::uint8_t Byte(float value) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value * 255), 0L, 255L));
}

/// One axis of a change of size: which source pixels each target pixel takes, and how much of each.
struct STaps {
    int first = 0;
    std::vector<float> weights;
};

std::vector<STaps> TapsOf(int from, int to) {
    std::vector<STaps> taps(static_cast<std::size_t>(to));
    const double scale = static_cast<double>(from) / to;
    const double radius =
        std::max(1.0, scale); // a tent as wide as a source or target pixel, whichever is wider
    for (int i = 0; i < to; ++i) {
        auto& tap = taps[static_cast<std::size_t>(i)];
        const double centre = (i + 0.5) * scale - 0.5;
        tap.first = std::max(0, static_cast<int>(std::ceil(centre - radius)));
        const int last = std::min(from - 1, static_cast<int>(std::floor(centre + radius)));
        double sum = 0;
        for (int k = tap.first; k <= last; ++k) {
            // The overlap of the target pixel's footprint with source pixel k, softened by half a source
            // pixel.
            const double reach = scale / 2 + 0.5 - std::abs(k - centre);
            const double weight = std::clamp(reach, 0.0, std::min(1.0, scale));
            tap.weights.push_back(static_cast<float>(weight));
            sum += weight;
        }
        for (auto& weight : tap.weights) weight /= static_cast<float>(sum);
    }
    return taps;
}

void Add(SColour& sum, const SColour& pixel, float weight) {
    sum.r += pixel.r * weight;
    sum.g += pixel.g * weight;
    sum.b += pixel.b * weight;
    sum.a += pixel.a * weight;
}

} // namespace

CBitmap::CBitmap(int width, int height)
    : _width(width), _height(height),
      _pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), SColour{0, 0, 0, 0}) {}

CBitmap::CBitmap(const SPixels& pixels) : CBitmap(pixels.width, pixels.height) {
    for (std::size_t i = 0; i < _pixels.size(); ++i) {
        const auto* from = pixels.rgba.data() + i * 4;
        const float alpha = static_cast<float>(from[3]) / 255;
        const auto channel = [&](int k) { return static_cast<float>(from[k]) / 255 * alpha; };
        _pixels[i] = {channel(0), channel(1), channel(2), alpha};
    }
}

void CBitmap::Over(const CBitmap& top, int x, int y, const SColour& modulate) {
    for (int v = std::max(0, -y); v < std::min(top._height, _height - y); ++v) {
        for (int u = std::max(0, -x); u < std::min(top._width, _width - x); ++u) {
            const SColour& from = top.At(u, v);
            SColour& to = At(x + u, y + v);
            const float rest = 1 - from.a * modulate.a;
            to.r = from.r * modulate.r * modulate.a + to.r * rest;
            to.g = from.g * modulate.g * modulate.a + to.g * rest;
            to.b = from.b * modulate.b * modulate.a + to.b * rest;
            to.a = from.a * modulate.a + to.a * rest;
        }
    }
}

void CBitmap::Paste(const CBitmap& part, int x, int y) {
    for (int v = 0; v < part._height; ++v) {
        for (int u = 0; u < part._width; ++u) At(x + u, y + v) = part.At(u, v);
    }
}

CBitmap CBitmap::Cut(int x, int y, int width, int height) const {
    CBitmap part(width, height);
    for (int v = 0; v < height; ++v) {
        for (int u = 0; u < width; ++u) part.At(u, v) = At(x + u, y + v);
    }
    return part;
}

CBitmap CBitmap::Resized(int width, int height) const {
    if (width == _width && height == _height) return *this;
    const auto across = TapsOf(_width, width);
    const auto down = TapsOf(_height, height);
    CBitmap narrow(width, _height);
    for (int y = 0; y < _height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto& tap = across[static_cast<std::size_t>(x)];
            for (std::size_t k = 0; k < tap.weights.size(); ++k)
                Add(narrow.At(x, y), At(tap.first + static_cast<int>(k), y), tap.weights[k]);
        }
    }
    CBitmap result(width, height);
    for (int y = 0; y < height; ++y) {
        const auto& tap = down[static_cast<std::size_t>(y)];
        for (std::size_t k = 0; k < tap.weights.size(); ++k) {
            for (int x = 0; x < width; ++x)
                Add(result.At(x, y), narrow.At(x, tap.first + static_cast<int>(k)), tap.weights[k]);
        }
    }
    return result;
}

SPixels CBitmap::Quantised(double grain) const {
    SPixels pixels{_width, _height, std::vector<std::uint8_t>(_pixels.size() * 4)};
    for (int y = 0; y < _height; ++y) {
        for (int x = 0; x < _width; ++x) {
            const SColour& from = At(x, y);
            auto* to = pixels.At(x, y);
            to[3] = Byte(from.a);
            if (to[3] == 0) continue;
            const float noise = grain > 0 ? Noise(x, y) * static_cast<float>(grain) / 255 : 0.0f;
            to[0] = Byte(from.r / from.a + noise);
            to[1] = Byte(from.g / from.a + noise);
            to[2] = Byte(from.b / from.a + noise);
        }
    }
    return pixels;
}

} // namespace KAV::Artwork
