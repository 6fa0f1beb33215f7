#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The names of pictures, which also say how a picture is cut into frames, at which size it was made and how
/// far it is blurred: "Dial((63x8))##Sz-1x-1pxSb0.png". Any thread.
namespace KAV::Pixels {

/// How a picture is cut: frames of one size, filled row by row. The last row may have empty cells.
struct SImageGrid {
    std::int32_t frames = 1;
    std::int32_t columns = 1;
    std::int32_t rows = 1;

    bool operator==(const SImageGrid&) const = default;
};

/// The size at which a picture is made, and its blur.
struct SImageMark {
    std::int32_t width = -1; ///< of one frame, in pixels; -1: as stored
    std::int32_t height = -1;
    std::int32_t blur = 0; ///< radius in pixels

    bool operator==(const SImageMark&) const = default;
};

/// "((N))": N frames, one below the other. "((NxC))": N frames in C columns. One frame if the name has no
/// grid, or one without a frame or a column.
SImageGrid GridOf(std::u16string_view name) noexcept;

/// What follows "##"; the stored size without a blur if nothing does.
SImageMark MarkOf(std::u16string_view name) noexcept;

/// The name of the same picture with another mark. Blanks become "_".
std::u16string WithMark(std::u16string_view name, const SImageMark& mark);

} // namespace KAV::Pixels
