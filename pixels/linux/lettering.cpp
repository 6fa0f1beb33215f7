#include "pixels/lettering.h"

#include "pixels/linux/free_type_lettering.h"
#include "pixels/linux/text_line.h"
#include "pixels/linux/typefaces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>

namespace KAV::Pixels {

namespace {

constexpr unsigned Opaque = 255;
constexpr float LargestPixels = 1000.0f; // of the typeface: a larger text counts as one of this size

/// x times y, where 255 stands for 1.
unsigned Times(unsigned x, unsigned y) noexcept {
    return (x * y + Opaque / 2) / Opaque;
}

/// A rectangle of pixels, and how much of each the text covers.
class CCoverage final {
public:
    /// The part of the line's box that is in the picture.
    CCoverage(const STextLine& line, const SBitmap& picture)
        : _left(std::max(line.left, 0)), _top(std::max(line.top, 0)),
          _width(Length(line.left, line.width, picture.width)),
          _height(Length(line.top, line.height, picture.height)) {
        if (!IsEmpty()) _values.resize(static_cast<std::size_t>(_width) * static_cast<std::size_t>(_height));
    }

    bool IsEmpty() const noexcept { return _width <= 0 || _height <= 0; }

    /// With its origin at x, y of the picture. Neighbours that share a pixel cover it together.
    void Add(const FT_GlyphSlotRec_& glyph, std::int64_t x, std::int64_t y) noexcept {
        const auto& from = glyph.bitmap;
        const auto left = x + glyph.bitmap_left - _left;
        const auto top = y - glyph.bitmap_top - _top;
        const auto right = std::min(left + std::int64_t{from.width}, std::int64_t{_width});
        const auto bottom = std::min(top + std::int64_t{from.rows}, std::int64_t{_height});
        for (auto row = std::max(top, std::int64_t{0}); row < bottom; ++row) {
            const auto* const bytes = from.buffer + (row - top) * from.pitch;
            for (auto column = std::max(left, std::int64_t{0}); column < right; ++column) {
                auto& value = At(column, row);
                value = static_cast<std::uint8_t>(std::min(value + bytes[column - left], int{Opaque}));
            }
        }
    }

    void Paint(std::uint32_t colour, SBitmap& picture) const noexcept {
        const std::array<unsigned, 4> paint{
            colour & Opaque, colour >> 8U & Opaque, colour >> 16U & Opaque, Opaque};
        for (std::int32_t row = 0; row < _height; ++row) {
            auto* to = picture.bytes.data() + static_cast<std::ptrdiff_t>(_top + row) * picture.stride +
                       static_cast<std::ptrdiff_t>(_left) * 4;
            for (std::int32_t column = 0; column < _width; ++column, to += 4) {
                const unsigned alpha = Times(colour >> 24U, At(column, row));
                if (alpha == 0) continue;
                for (std::size_t n = 0; n < paint.size(); ++n)
                    to[n] = static_cast<std::uint8_t>(Times(paint[n], alpha) + Times(to[n], Opaque - alpha));
            }
        }
    }

private:
    static std::int32_t Length(std::int32_t from, std::int32_t length, std::int32_t limit) noexcept {
        const auto end = std::min(std::int64_t{from} + length, std::int64_t{limit});
        return static_cast<std::int32_t>(std::max(end - std::max(from, 0), std::int64_t{0}));
    }
    std::size_t Place(std::int64_t column, std::int64_t row) const noexcept {
        return static_cast<std::size_t>(row * _width + column);
    }
    std::uint8_t& At(std::int64_t column, std::int64_t row) noexcept { return _values[Place(column, row)]; }
    std::uint8_t At(std::int64_t column, std::int64_t row) const noexcept {
        return _values[Place(column, row)];
    }

    std::int32_t _left;
    std::int32_t _top;
    std::int32_t _width;
    std::int32_t _height;
    std::vector<std::uint8_t> _values;
};

class CFreeTypeLettering final : public CLettering {
public:
    CFreeTypeLettering(const Platform::SFreeType& freeType, CGlyphSearch& search)
        : _typefaces(freeType, search) {}

    bool Prepare() { return _typefaces.Prepare(); }

    void Draw(const STextLine& asked, SBitmap& to) override {
        const auto line = Bounded(asked);
        CCoverage coverage(line, to);
        if (coverage.IsEmpty() || line.pixels <= 0.0f || line.colour >> 24U == 0) return;
        const auto set = SetLine(_typefaces, line);
        for (const auto& placed : set.glyphs) {
            const std::int64_t quarters = std::llround((set.left + placed.left * line.pixels) * 4.0f);
            const auto* const glyph =
                _typefaces.Render(placed.glyph, line.pixels, static_cast<int>(quarters & 3));
            if (glyph != nullptr) coverage.Add(*glyph, quarters >> 2, set.baseline);
        }
        coverage.Paint(line.colour, to);
    }
    STextSize Measure(const STextLine& asked) override {
        const auto line = Bounded(asked);
        return {WidthOf(_typefaces, line) * line.pixels,
            (_typefaces.Ascent() + _typefaces.Descent()) * line.pixels};
    }
    std::vector<float> Gaps(const STextLine& asked) override {
        const auto line = Bounded(asked);
        std::vector<float> gaps(line.text.size() + 1);
        CTextWalk walk(_typefaces, line);
        while (walk.Next()) {
            for (auto unit = walk.FirstUnit(); unit < walk.EndUnit(); ++unit)
                gaps[unit] = walk.Glyph().left * line.pixels;
        }
        gaps.back() = walk.Glyph().right * line.pixels;
        return gaps;
    }
    bool HasNewGlyphs() override { return _typefaces.HasNewGlyphs(); }

private:
    /// With a size that can be drawn; what is none counts as 0.
    static STextLine Bounded(STextLine line) {
        line.pixels = line.pixels > 0.0f ? std::min(line.pixels, LargestPixels) : 0.0f;
        if (line.align < 0 || line.align > 8) line.align = 0;
        return line;
    }

    CTypefaces _typefaces;
};

} // namespace

std::unique_ptr<CLettering> MakeLettering(const Platform::SFreeType& freeType, CGlyphSearch& search) try {
    auto lettering = std::make_unique<CFreeTypeLettering>(freeType, search);
    if (!lettering->Prepare()) return nullptr;
    return lettering;
} catch (const std::bad_alloc&) {
    return nullptr;
}

std::unique_ptr<CLettering> CLettering::Create() {
    const auto* const freeType = Platform::FreeType();
    return freeType != nullptr ? MakeLettering(*freeType, CGlyphSearch::OfProcess()) : nullptr;
}

} // namespace KAV::Pixels
