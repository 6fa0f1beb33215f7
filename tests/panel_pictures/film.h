#pragma once

#include "gui/window.h"
#include "pixels/bitmap.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// The part of a picture within `area`. Throws std::out_of_range if that doesn't lie inside it.
inline Pixels::SBitmap Cut(const Pixels::SBitmap& picture, const GUI::SPixelRect& area) {
    if (area.nL < 0 || area.nT < 0 || area.nL + area.nW > picture.width || area.nT + area.nH > picture.height)
        throw std::out_of_range("not in the picture");
    auto part = Pixels::TransparentBitmap(area.nW, area.nH);
    for (std::int32_t y = 0; y < area.nH; ++y) {
        std::copy_n(
            picture.bytes.begin() + static_cast<std::ptrdiff_t>(area.nT + y) * picture.stride + 4 * area.nL,
            4 * area.nW, part.bytes.begin() + static_cast<std::ptrdiff_t>(y) * part.stride);
    }
    return part;
}

/// Puts a picture into a larger one, with its left upper corner at a place.
inline void Paste(
    const Pixels::SBitmap& picture, std::int32_t left, std::int32_t top, Pixels::SBitmap& into) {
    for (std::int32_t y = 0; y < picture.height; ++y) {
        std::copy_n(picture.bytes.begin() + static_cast<std::ptrdiff_t>(y) * picture.stride,
            4 * picture.width,
            into.bytes.begin() + static_cast<std::ptrdiff_t>(top + y) * into.stride + 4 * left);
    }
}

/// Successive pictures of one size, and a sheet that shows them in rows from the first to the last.
class CFilm final {
public:
    explicit CFilm(std::int32_t columns) : _columns(columns) {}

    void Add(Pixels::SBitmap frame) { _frames.push_back(std::move(frame)); }
    const std::vector<Pixels::SBitmap>& Frames() const { return _frames; }

    Pixels::SBitmap Sheet() const {
        const auto count = static_cast<std::int32_t>(_frames.size());
        const auto columns = std::min(_columns, count);
        const auto rows = (count + _columns - 1) / _columns;
        const auto width = _frames.at(0).width + Gap;
        const auto height = _frames.at(0).height + Gap;
        auto sheet = Pixels::TransparentBitmap(columns * width - Gap, rows * height - Gap);
        for (std::int32_t n = 0; n < count; ++n) {
            Paste(_frames[static_cast<std::size_t>(n)], n % _columns * width, n / _columns * height, sheet);
        }
        return sheet;
    }

private:
    static constexpr std::int32_t Gap = 3; // transparent

    std::int32_t _columns;
    std::vector<Pixels::SBitmap> _frames;
};

} // namespace KAV::Tests
