#include "native/paint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace KAV::Native {

namespace {

using Channels = std::array<std::uint32_t, 4>; // blue, green, red, alpha; premultiplied

constexpr std::uint32_t Full = 255;

constexpr std::uint32_t Share(std::uint32_t value, std::uint32_t share) noexcept {
    return (value * share + Full / 2) / Full;
}

Channels Premultiplied(std::uint32_t colour, std::uint32_t coverage) noexcept {
    const std::uint32_t alpha = Share(colour >> 24u, coverage);
    return {Share(colour & Full, alpha), Share((colour >> 8u) & Full, alpha),
        Share((colour >> 16u) & Full, alpha), alpha};
}

std::uint8_t* PixelAt(Pixels::SBitmap& bitmap, std::int32_t x, std::int32_t y) noexcept {
    return bitmap.bytes.data() + static_cast<std::ptrdiff_t>(y) * bitmap.stride + std::ptrdiff_t{4} * x;
}

void Blend(std::uint8_t* pixel, const Channels& over) noexcept {
    const std::uint32_t rest = Full - over[3];
    for (std::size_t n = 0; n < over.size(); ++n)
        pixel[n] = static_cast<std::uint8_t>(std::min(Full, over[n] + Share(pixel[n], rest)));
}

float Distance(SSpot spot, SSpot from, SSpot to) noexcept {
    const float dx = to.x - from.x;
    const float dy = to.y - from.y;
    const float length = dx * dx + dy * dy;
    float along = 0.0f;
    if (length > 0.0f)
        along = std::clamp(((spot.x - from.x) * dx + (spot.y - from.y) * dy) / length, 0.0f, 1.0f);
    return std::hypot(spot.x - from.x - along * dx, spot.y - from.y - along * dy);
}

float Distance(SSpot spot, std::span<const SSpot> line) noexcept {
    float least = Distance(spot, line.front(), line.front());
    for (std::size_t n = 1; n < line.size(); ++n)
        least = std::min(least, Distance(spot, line[n - 1], line[n]));
    return least;
}

/// The part of an area that lies in the picture.
Platform::SArea Within(const Pixels::SBitmap& bitmap, const Platform::SArea& area) noexcept {
    const auto left = std::max(area.left, 0);
    const auto top = std::max(area.top, 0);
    const auto right = std::min(std::int64_t{area.left} + area.width, std::int64_t{bitmap.width});
    const auto bottom = std::min(std::int64_t{area.top} + area.height, std::int64_t{bitmap.height});
    return {left, top, static_cast<std::int32_t>(std::max<std::int64_t>(right - left, 0)),
        static_cast<std::int32_t>(std::max<std::int64_t>(bottom - top, 0))};
}

Platform::SArea Around(std::span<const SSpot> spots, float reach) noexcept {
    const auto [left, right] = std::minmax_element(
        spots.begin(), spots.end(), [](const SSpot& a, const SSpot& b) { return a.x < b.x; });
    const auto [top, bottom] = std::minmax_element(
        spots.begin(), spots.end(), [](const SSpot& a, const SSpot& b) { return a.y < b.y; });
    const auto l = static_cast<std::int32_t>(std::floor(left->x - reach));
    const auto t = static_cast<std::int32_t>(std::floor(top->y - reach));
    return {l, t, static_cast<std::int32_t>(std::ceil(right->x + reach)) - l,
        static_cast<std::int32_t>(std::ceil(bottom->y + reach)) - t};
}

} // namespace

void Fill(Pixels::SBitmap& to, const Platform::SArea& area, std::uint32_t colour) noexcept {
    const auto within = Within(to, area);
    const auto channels = Premultiplied(colour, Full);
    for (std::int32_t y = within.top; y < within.top + within.height; ++y) {
        auto* pixel = PixelAt(to, within.left, y);
        for (std::int32_t x = 0; x < within.width; ++x, pixel += 4) Blend(pixel, channels);
    }
}

void Frame(
    Pixels::SBitmap& to, const Platform::SArea& area, std::int32_t width, std::uint32_t colour) noexcept {
    const std::int32_t inner = std::max(area.height - 2 * width, 0);
    Fill(to, {area.left, area.top, area.width, width}, colour);
    Fill(to, {area.left, area.top + area.height - width, area.width, width}, colour);
    Fill(to, {area.left, area.top + width, width, inner}, colour);
    Fill(to, {area.left + area.width - width, area.top + width, width, inner}, colour);
}

void Stroke(Pixels::SBitmap& to, std::span<const SSpot> spots, float width, std::uint32_t colour) noexcept {
    if (spots.empty()) return;
    const float reach = width / 2.0f + 0.5f; // where the soft edge ends
    const auto within = Within(to, Around(spots, reach));
    for (std::int32_t y = within.top; y < within.top + within.height; ++y) {
        for (std::int32_t x = within.left; x < within.left + within.width; ++x) {
            const SSpot centre{static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f};
            const float coverage = std::clamp(reach - Distance(centre, spots), 0.0f, 1.0f);
            const auto share = static_cast<std::uint32_t>(std::lround(coverage * static_cast<float>(Full)));
            if (share != 0) Blend(PixelAt(to, x, y), Premultiplied(colour, share));
        }
    }
}

void Overlay(Pixels::SBitmap& to, const Pixels::SBitmap& from, std::int32_t left, std::int32_t top) noexcept {
    const auto within = Within(to, {left, top, from.width, from.height});
    for (std::int32_t y = within.top; y < within.top + within.height; ++y) {
        const auto* source = from.bytes.data() + static_cast<std::ptrdiff_t>(y - top) * from.stride +
                             std::ptrdiff_t{4} * (within.left - left);
        auto* pixel = PixelAt(to, within.left, y);
        for (std::int32_t x = 0; x < within.width; ++x, pixel += 4, source += 4)
            Blend(pixel, {source[0], source[1], source[2], source[3]});
    }
}

} // namespace KAV::Native
