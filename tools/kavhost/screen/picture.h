#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

namespace KAV::Host {

/// Opaque pixels, 0xRRGGBB each, from the top left, row by row.
struct SPicture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint32_t> pixels;

    bool operator==(const SPicture&) const = default;
};

/// Whether all pixels have the same colour, as long as nothing has been drawn.
bool IsPlain(const SPicture& picture) noexcept;

/// Writes a PNG. Throws CFailure when memory is short or the stream fails.
void WritePng(const SPicture& picture, std::ostream& png);

} // namespace KAV::Host
