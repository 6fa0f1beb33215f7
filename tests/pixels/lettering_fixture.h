#pragma once

#include "pixels/lettering.h"
#include "pixels/linux/free_type_lettering.h"
#include "pixels/linux/glyph_search.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::Tests {

inline constexpr auto JapaneseFont = "/usr/share/fonts/truetype/motoya-l-cedar/MTLc3m.ttf";

/// Texts in our own typeface: no other font is ever found.
class CLetteringTest : public testing::Test {
protected:
    Pixels::CGlyphSearch search{[] { return std::unique_ptr<Pixels::IFontFinder>(); }};
    Platform::SFreeType library = {}; ///< the lettering's; tests replace functions of it
    std::unique_ptr<Pixels::CLettering> lettering;

    void SetUp() override {
        ASSERT_NE(Platform::FreeType(), nullptr);
        library = *Platform::FreeType();
        lettering = Pixels::MakeLettering(library, search);
        ASSERT_NE(lettering, nullptr);
    }

    /// At the top left of a box, white.
    static Pixels::STextLine Line(
        std::u16string_view text, float pixels = 20.0f, std::int32_t width = 200, std::int32_t height = 40) {
        Pixels::STextLine line;
        line.text = text;
        line.pixels = pixels;
        line.align = 0;
        line.colour = 0xFFFFFFFF;
        line.width = width;
        line.height = height;
        return line;
    }
    /// Over nothing, in a picture that ends with the box.
    Pixels::SBitmap Drawn(const Pixels::STextLine& line) {
        auto picture = Pixels::TransparentBitmap(line.left + line.width, line.top + line.height);
        lettering->Draw(line, picture);
        return picture;
    }
    float Width(std::u16string_view text, float pixels = 20.0f) {
        return lettering->Measure(Line(text, pixels)).width;
    }
};

inline std::uint32_t PixelAt(const Pixels::SBitmap& picture, std::int32_t x, std::int32_t y) {
    const auto* const bytes = picture.bytes.data() + static_cast<std::ptrdiff_t>(y) * picture.stride +
                              static_cast<std::ptrdiff_t>(x) * 4;
    return bytes[0] | std::uint32_t{bytes[1]} << 8U | std::uint32_t{bytes[2]} << 16U |
           std::uint32_t{bytes[3]} << 24U;
}

/// The smallest rectangle that holds all that isn't transparent.
struct SInk {
    std::int32_t left = 1 << 30;
    std::int32_t top = 1 << 30;
    std::int32_t right = -1; ///< behind it
    std::int32_t bottom = -1;

    bool IsEmpty() const { return right < 0; }
    bool operator==(const SInk&) const = default;
};

inline SInk InkOf(const Pixels::SBitmap& picture) {
    SInk ink;
    for (std::int32_t y = 0; y < picture.height; ++y) {
        for (std::int32_t x = 0; x < picture.width; ++x) {
            if (PixelAt(picture, x, y) == 0) continue;
            ink.left = std::min(ink.left, x);
            ink.top = std::min(ink.top, y);
            ink.right = std::max(ink.right, x + 1);
            ink.bottom = std::max(ink.bottom, y + 1);
        }
    }
    return ink;
}

/// The part of a picture.
inline Pixels::SBitmap Cut(const Pixels::SBitmap& picture, std::int32_t left, std::int32_t top,
    std::int32_t width, std::int32_t height) {
    auto part = Pixels::TransparentBitmap(width, height);
    for (std::int32_t y = 0; y < height; ++y)
        std::copy_n(picture.bytes.begin() + static_cast<std::ptrdiff_t>(top + y) * picture.stride + 4 * left,
            4 * width, part.bytes.begin() + static_cast<std::ptrdiff_t>(y) * part.stride);
    return part;
}

} // namespace KAV::Tests
