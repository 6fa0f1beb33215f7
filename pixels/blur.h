#pragma once

#include <cstdint>
#include <span>

namespace KAV::Pixels {

/// Blurs a bitmap of 8-bit channels in place: one pass for each distance 1..radius. A pass takes the rows
/// from the top and each row from the left, and sets every channel to the mean of the four pixels that lie
/// `distance` away along the diagonals, rounded down. Pixels outside count as the nearest one inside. A pass
/// reads what it has written before, which gives the blur its shape: it drags to the lower right.
///
/// `bits` holds at least height * stride bytes; stride / width is the size of a pixel. With `alpha` all four
/// channels are blurred, without it the first three. Any thread.
void Blur(std::span<std::uint8_t> bits, std::int32_t width, std::int32_t height, std::int32_t radius,
    std::int32_t stride, bool alpha) noexcept;

} // namespace KAV::Pixels
