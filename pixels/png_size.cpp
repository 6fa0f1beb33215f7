#include "pixels/png_reader.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace KAV::Pixels {

namespace {

constexpr std::uint32_t MaxStoredSide = 16384;
constexpr std::uint64_t MaxPacking = 1032; // bytes that one byte of a deflated stream yields at most

/// What every file begins with: the signature, then the chunk IHDR.
constexpr std::array<std::uint8_t, 16> Beginning{
    0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A, 0, 0, 0, 13, 'I', 'H', 'D', 'R'};
constexpr std::size_t HeadBytes = Beginning.size() + 13;

std::uint32_t BigEndian(std::span<const std::uint8_t> bytes) noexcept {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

/// By the colour type of the head; 0 if there is no such type.
std::uint32_t Channels(std::uint8_t colourType) noexcept {
    switch (colourType) {
    case 0: // grey
    case 3: // palette
        return 1;
    case 4: // grey with alpha
        return 2;
    case 2: // colours
        return 3;
    case 6: // colours with alpha
        return 4;
    default:
        return 0;
    }
}

} // namespace

std::optional<SPngSize> PngSize(std::span<const std::uint8_t> file) noexcept {
    if (file.size() < HeadBytes || !std::equal(Beginning.begin(), Beginning.end(), file.begin()))
        return std::nullopt;
    const auto head = file.subspan(Beginning.size());
    const std::uint32_t width = BigEndian(head);
    const std::uint32_t height = BigEndian(head.subspan(4));
    const std::uint64_t pixelBits = std::uint64_t{head[8]} * Channels(head[9]);
    if (width == 0 || height == 0 || width > MaxStoredSide || height > MaxStoredSide || pixelBits == 0)
        return std::nullopt;
    const std::uint64_t bytes = (width * pixelBits + 7) / 8 * height;
    if (bytes > MaxPacking * file.size()) return std::nullopt;
    return SPngSize{static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
}

} // namespace KAV::Pixels
