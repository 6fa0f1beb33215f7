#pragma once

#include "gfx/gpu.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace KAV::Tests {

/// Draws as the rules of the software renderer say (gfx/cpu/data.h), one pixel at a time, in double precision
/// and without a library: what the renderer is compared with. Each draw is painted at once.
class CPlainRenderer final : public GFX::GPU {
public:
    CPlainRenderer(std::int32_t width, std::int32_t height);

    void Clear() override;
    void SetLineWidth(float width) override { _lineWidth = width; }
    void SetLineColor(float red, float green, float blue, float alpha) override;
    void SetLineSmooth(bool smooth) override { _lineSmooth = smooth; }
    void DrawLines(std::int32_t count, const GFX::SPoint* points, bool perVertex, bool strip) override;
    void DrawTexture(const GFX::STexture& texture, const GFX::SDraw& draw) override;
    void DrawTexture9(const GFX::STexture& texture, const GFX::SDraw9& draw) override;
    void CreateTexture(const Pixels::SBitmap& bitmap, GFX::STexture& texture, std::int32_t textureWidth,
        std::int32_t textureHeight) override;
    void FreeTexture(GFX::STexture& texture) override;
    void SetClip(float left, float top, float width, float height) override;
    bool IsReady() const override { return true; }
    void ReadBack(std::uint32_t* bits, std::int32_t width, std::int32_t height) override;

private:
    using Colour = std::array<double, 4>; // red, green, blue, alpha: premultiplied, 0..255
    struct SPicture {
        std::int32_t width = 0;
        std::int32_t height = 0;
        std::vector<Colour> pixels;

        const Colour& At(std::int32_t x, std::int32_t y) const {
            return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                          static_cast<std::size_t>(x)];
        }
    };
    struct SVector {
        double x = 0.0;
        double y = 0.0;
    };
    /// The part of a picture that a quad shows, and where.
    struct SQuad {
        GFX::SRect to;
        double left, top, right, bottom; // of the part, in pixels
        std::uint32_t colour;
        GFX::STransform transform;
        SVector centre;              // of the transform
        std::array<bool, 4> meets{}; // another slice: left, top, right, bottom
    };
    using Shape = std::vector<SVector>;

    static SPicture CellScaled(const SPicture& picture, std::int32_t left, std::int32_t top,
        std::int32_t cellWidth, std::int32_t cellHeight, std::int32_t width, std::int32_t height);
    static SVector Moved(SVector point, const GFX::STransform& transform, SVector centre);
    void DrawQuad(const GFX::STexture& texture, const SQuad& quad);
    void Lay(std::int32_t x, std::int32_t y, const Colour& colour, double share);
    bool IsClipped(std::int32_t x, std::int32_t y) const;
    void DrawPath(const std::vector<GFX::SPoint>& points, bool perVertex);
    double Share(const std::vector<Shape>& shapes, std::int32_t x, std::int32_t y) const;

    std::int32_t _width;
    std::int32_t _height;
    std::vector<std::array<int, 3>> _frame; // red, green, blue
    std::map<std::uint64_t, SPicture> _pictures;
    std::uint64_t _lastHandle = 0;
    std::array<double, 4> _clip; // left, top, right, bottom
    double _lineWidth = 1.0;
    std::uint32_t _lineColour = 0xFFFFFFFF;
    bool _lineSmooth = false;
};

} // namespace KAV::Tests
