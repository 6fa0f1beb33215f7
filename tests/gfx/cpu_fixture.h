#pragma once

#include "gfx/cpu/data.h"
#include "tests/gfx/cpu_scenes.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>

namespace KAV::Tests {

inline constexpr std::uint32_t Black = 0xFF000000;
inline constexpr std::int32_t Width = 60;
inline constexpr std::int32_t Height = 40;

/// One colour all over.
inline Pixels::SBitmap Plain(std::int32_t width, std::int32_t height, std::uint32_t colour,
    Pixels::EAlpha alpha = Pixels::EAlpha::Straight) {
    auto bitmap = Pixels::TransparentBitmap(width, height);
    bitmap.alpha = alpha;
    for (std::size_t n = 0; n < bitmap.bytes.size(); n += 4) std::memcpy(&bitmap.bytes[n], &colour, 4);
    return bitmap;
}

inline GFX::SDraw At(float left, float top, float width, float height, std::uint32_t colour = GFX::White) {
    GFX::SDraw draw;
    draw.sTo = {left, top, width, height};
    draw.nColor = colour;
    return draw;
}

/// A renderer without a window, and what it has drawn.
class CpuData : public testing::Test {
protected:
    std::uint32_t Pixel(std::int32_t x, std::int32_t y) {
        return FrameOf(gpu, Width, Height)[static_cast<std::size_t>(y * Width + x)];
    }
    template<typename TDraw>
    void Draw(const TDraw& draws) {
        gpu.BeginFrame();
        gpu.Clear();
        draws();
        gpu.EndFrame();
    }
    bool IsBlack() { return FrameOf(gpu, Width, Height) == Frame(Width * Height, Black); }
    GFX::CPU::DATA gpu{{nullptr, Width, Height}};
};

} // namespace KAV::Tests
