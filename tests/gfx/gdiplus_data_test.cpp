// The software renderer of Windows: what it draws, what it logs, and what it frees.

#include "gfx/cpu/gdiplus/data.h"
#include "gfx/pixel_format.h"
#include "pixels/sheet.h"
#include "tests/gfx/cpu_scenes.h"
#include "tests/support/added_log.h"
#include "tests/support/counted_gdiplus.h"
#include "tests/support/plain_renderer.h"
#include "utils/exceptions.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

constexpr std::uint32_t Black = 0xFF000000;
constexpr std::uint32_t Red = 0xFFFF0000;
constexpr std::uint32_t Green = 0xFF00FF00;
constexpr std::int32_t Width = 60;
constexpr std::int32_t Height = 40;

Pixels::SBitmap Plain(std::int32_t width, std::int32_t height, std::uint32_t colour,
    Pixels::EAlpha alpha = Pixels::EAlpha::Straight) {
    auto bitmap = Pixels::TransparentBitmap(width, height);
    bitmap.alpha = alpha;
    for (std::size_t n = 0; n < bitmap.bytes.size(); n += 4) std::memcpy(&bitmap.bytes[n], &colour, 4);
    return bitmap;
}

SDraw At(float left, float top, float width, float height, std::uint32_t colour = White) {
    SDraw draw;
    draw.sTo = {left, top, width, height};
    draw.nColor = colour;
    return draw;
}

/// A renderer without a window. At its end nothing of GDI+ may be left.
class GdiplusData : public testing::Test {
protected:
    using Nothing = std::map<std::string, int>;

    CCountedGdiplus gdi;
    std::unique_ptr<CPU::DATA> own = std::make_unique<CPU::DATA>(SRendererTarget{nullptr, Width, Height});
    CPU::DATA& gpu = *own;

    void TearDown() override {
        own.reset();
        EXPECT_EQ(gdi.Left(), Nothing{});
    }
    std::uint32_t Pixel(std::int32_t x, std::int32_t y) {
        return FrameOf(gpu, Width, Height)[static_cast<std::size_t>(y * Width + x)];
    }
    bool IsAll(std::uint32_t colour) { return FrameOf(gpu, Width, Height) == Frame(Width * Height, colour); }
    void Draw(const std::function<void()>& draws) {
        gpu.BeginFrame();
        gpu.Clear();
        draws();
        gpu.EndFrame();
    }
    STexture Texture(std::uint32_t colour, std::int32_t side = 4) {
        return MakeTexture(gpu, Plain(side, side, colour));
    }
    STexture TextureOfBits(const void* bits, std::int32_t pitch, std::int32_t format, std::int32_t height) {
        STexture texture;
        texture.nW = texture.nH = 4;
        gpu.CreateTextureBits(bits, pitch, format, texture, 4, height, 4, 4);
        return texture;
    }
    void Line(float x1, float y1, float x2, float y2, bool perVertex = false, std::uint32_t colour = White) {
        const std::array points{SPoint{x1, y1, 0, colour}, SPoint{x2, y2, 0, Green}};
        gpu.DrawLines(2, points.data(), perVertex, true);
    }
    /// What is logged while `function` fails.
    std::string LogOf(std::string_view function, const std::function<void()>& call) {
        const CAddedLog log;
        gdi.Fail(function, Gdiplus::InvalidParameter);
        call();
        gdi.Fail(function, Gdiplus::Ok);
        return log.Text();
    }
};

} // namespace

// The frame

TEST_F(GdiplusData, IsReadyAndTakesTexturesOfAnySize) {
    EXPECT_TRUE(gpu.IsReady());
    EXPECT_TRUE(gpu.IsCurrent());
    EXPECT_EQ(std::u16string(gpu.GetName()), u"Software");
    EXPECT_TRUE(gpu.AnySizeTextures());
    EXPECT_EQ(gpu.MinTextureW(), 0);
    EXPECT_EQ(gpu.MinTextureH(), 0);
    EXPECT_EQ(gpu.MaxTextureW(), 999999);
    EXPECT_EQ(gpu.MaxTextureH(), 999999);
    EXPECT_EQ(gpu.MaxAspect(), 999999);
    EXPECT_FALSE(gpu.IsOffscreenCapable());
}

TEST_F(GdiplusData, LogsTheVersionOfItsLibrary) {
    const CAddedLog log;
    const CPU::DATA other({nullptr, 1, 1});
    int numbers[4] = {};
    int end = 0;
    EXPECT_EQ(std::sscanf(log.Text().c_str(), "GdiPlus=v%d.%d.%d.%d\r\n%n", &numbers[0], &numbers[1],
                  &numbers[2], &numbers[3], &end),
        4)
        << log.Text();
    EXPECT_EQ(static_cast<std::size_t>(end), log.Text().size());
}

TEST_F(GdiplusData, HasAFrameOfOnePixelAtLeast) {
    CPU::DATA small({nullptr, 0, -5});
    EXPECT_TRUE(small.IsReady());
    small.Clear();
    EXPECT_EQ(FrameOf(small, 1, 1), Frame(1, Black));
}

TEST_F(GdiplusData, ClearsAllOfTheFrameToOpaqueBlack) {
    const auto red = Texture(Red);
    Draw([&] { gpu.DrawTexture(red, At(0, 0, Width, Height)); });
    EXPECT_NE(Pixel(30, 20), Black);
    Draw([] {});
    EXPECT_TRUE(IsAll(Black));
}

TEST_F(GdiplusData, ReadsBackInAnySize) {
    const auto red = MakeTexture(gpu, Plain(Width, Height, Red));
    Draw([&] { gpu.DrawTexture(red, At(0, 0, Width, Height)); });
    EXPECT_TRUE(IsAll(Red));
    const auto larger = FrameOf(gpu, Width + 3, Height + 2);
    for (std::int32_t y = 0; y < Height + 2; ++y) {
        for (std::int32_t x = 0; x < Width + 3; ++x) {
            ASSERT_EQ(
                larger[static_cast<std::size_t>(y * (Width + 3) + x)], x < Width && y < Height ? Red : Black);
        }
    }
    EXPECT_EQ(FrameOf(gpu, 7, 5), Frame(35, Red));
    gpu.ReadBack(nullptr, 5, 5);
    std::uint32_t untouched = 1;
    gpu.ReadBack(&untouched, 0, 1);
    gpu.ReadBack(&untouched, 1, -1);
    EXPECT_EQ(untouched, 1u);
}

TEST_F(GdiplusData, KeepsItsFrameWhenResizedToNothing) {
    const auto red = MakeTexture(gpu, Plain(Width, Height, Red));
    Draw([&] { gpu.DrawTexture(red, At(0, 0, Width, Height)); });
    gpu.Resize(0, 10);
    gpu.Resize(10, 0);
    gpu.Resize(-1, 10);
    EXPECT_TRUE(IsAll(Red));
}

TEST_F(GdiplusData, HasNoClipWhenResized) {
    const auto red = MakeTexture(gpu, Plain(90, 80, Red));
    gpu.SetClip(1, 1, 1, 1);
    gpu.Resize(90, 80);
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 90, 80)); });
    EXPECT_EQ(FrameOf(gpu, 90, 80), Frame(90 * 80, Red));
    EXPECT_EQ(gdi.Left()["graphics"], 1) << "the old frame's is freed";
}

TEST_F(GdiplusData, ShutsDownOnce) {
    auto red = Texture(Red);
    EXPECT_TRUE(gpu.Shutdown());
    EXPECT_FALSE(gpu.IsReady());
    EXPECT_FALSE(gpu.Shutdown());
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 4, 4)); });
    gpu.Present();
    gpu.Resize(10, 10);
    EXPECT_FALSE(gpu.IsReady());
    EXPECT_EQ(gdi.Left().count("graphics"), 0u);
    gpu.FreeTexture(red);
    EXPECT_EQ(red, FreedTexture());
    EXPECT_EQ(gdi.Left().count("image"), 0u);
}

// Quads

TEST_F(GdiplusData, DrawsAQuadAtItsOwnSizePixelByPixel) {
    const auto picture = SpottedPicture(17, 13);
    auto opaque = picture;
    opaque.alpha = Pixels::EAlpha::None;
    const auto texture = MakeTexture(gpu, opaque);
    Draw([&] { gpu.DrawTexture(texture, At(5, 7, 17, 13)); });
    const auto frame = FrameOf(gpu, Width, Height);
    for (std::int32_t y = 0; y < Height; ++y) {
        for (std::int32_t x = 0; x < Width; ++x) {
            std::uint32_t expected = Black;
            if (x >= 5 && x < 22 && y >= 7 && y < 20) {
                std::memcpy(&expected,
                    &picture.bytes[static_cast<std::size_t>((y - 7) * picture.stride + 4 * (x - 5))], 4);
                expected |= Black;
            }
            ASSERT_EQ(frame[static_cast<std::size_t>(y * Width + x)], expected) << x << ", " << y;
        }
    }
}

TEST_F(GdiplusData, TintsEachChannelByItsOwnShare) {
    const auto grey = MakeTexture(gpu, Plain(4, 4, 0xFFC08040));
    Draw([&] { gpu.DrawTexture(grey, At(0, 0, 4, 4, 0xFF8040FF)); });
    const auto pixel = Pixel(1, 1);
    EXPECT_NEAR(static_cast<int>(pixel >> 16 & 0xFF), 0xC0 * 0x80 / 255, 1);
    EXPECT_NEAR(static_cast<int>(pixel >> 8 & 0xFF), 0x80 * 0x40 / 255, 1);
    EXPECT_NEAR(static_cast<int>(pixel & 0xFF), 0x40, 1);
    Draw([&] { gpu.DrawTexture(grey, At(0, 0, 4, 4, 0x80FFFFFF)); });
    EXPECT_NEAR(static_cast<int>(Pixel(1, 1) >> 16 & 0xFF), 0xC0 / 2, 1);
}

TEST_F(GdiplusData, UsesAColourMatrixForAnyColourButWhiteAndNoneForThat) {
    const auto red = Texture(Red);
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 4, 4)); });
    EXPECT_EQ(gdi.Made()["attributes"], 0);
    EXPECT_EQ(gdi.Calls("GdipSetWorldTransform"), 0);
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 4, 4, 0xFFFFFFFE)); });
    EXPECT_EQ(gdi.Calls("GdipSetImageAttributesColorMatrix"), 1);
    auto moved = At(0, 0, 4, 4);
    moved.sTransform.fMX = 1.0f;
    Draw([&] { gpu.DrawTexture(red, moved); });
    EXPECT_EQ(gdi.Calls("GdipSetWorldTransform"), 1);
    EXPECT_EQ(gdi.Calls("GdipResetWorldTransform"), 1);
}

TEST_F(GdiplusData, DrawsNothingInATransparentColour) {
    const auto red = Texture(Red);
    const int before = gdi.Calls("GdipDrawImageRectRect");
    auto turned = At(0, 0, 4, 4, 0x00FFFFFF);
    turned.sTransform.fRZ = 10.0f;
    SDraw9 slices;
    slices.sTo = {0, 0, 4, 4};
    slices.nColor = 0x00FFFFFF;
    slices.sTransform.fRZ = 10.0f;
    Draw([&] {
        gpu.DrawTexture(red, turned);
        gpu.DrawTexture9(red, slices);
    });
    EXPECT_TRUE(IsAll(Black));
    EXPECT_EQ(gdi.Calls("GdipDrawImageRectRect"), before);
    EXPECT_EQ(gdi.Made()["matrix"], 0);
}

TEST_F(GdiplusData, TransformsOneDrawAndNotTheNext) {
    const auto red = Texture(Red, 10);
    const auto green = Texture(Green, 4);
    auto turned = At(20, 10, 20, 10); // about 30, 15
    turned.sTransform.fRZ = 90.0f;
    turned.sTransform.fMX = 2.0f;
    Draw([&] {
        gpu.DrawTexture(red, turned);
        gpu.DrawTexture(green, At(50, 30, 4, 4));
    });
    EXPECT_EQ(Pixel(30, 8), Red) << "it stands upright";
    EXPECT_EQ(Pixel(30, 24), Red);
    EXPECT_EQ(Pixel(22, 15), Black);
    EXPECT_EQ(Pixel(38, 15), Black);
    EXPECT_EQ(Pixel(51, 31), Green);
    EXPECT_EQ(Pixel(53, 33), Green);
}

TEST_F(GdiplusData, DrawsInsideItsClipAlone) {
    const auto red = MakeTexture(gpu, Plain(Width, Height, Red));
    gpu.SetClip(50, 30, 3, 3);
    gpu.SetClip(10, 12, 5, 4); // replaces it
    Draw([&] { gpu.DrawTexture(red, At(0, 0, Width, Height)); });
    const auto frame = FrameOf(gpu, Width, Height);
    for (std::int32_t y = 0; y < Height; ++y) {
        for (std::int32_t x = 0; x < Width; ++x) {
            const bool inside = x >= 10 && x < 15 && y >= 12 && y < 16;
            ASSERT_EQ(frame[static_cast<std::size_t>(y * Width + x)], inside ? Red : Black) << x << ", " << y;
        }
    }
    for (const auto& none : {std::array{0.0f, 5.0f}, std::array{5.0f, 0.0f}}) {
        gpu.SetClip(10, 12, 5, 4);
        gpu.SetClip(1, 1, none[0], none[1]);
        Draw([&] { gpu.DrawTexture(red, At(0, 0, Width, Height)); });
        EXPECT_TRUE(IsAll(Red));
    }
}

TEST_F(GdiplusData, StretchesTheMiddleOfNineSlicesAndNotTheCorners) {
    // Corners red, edges green, the middle blue.
    auto picture = Plain(9, 9, 0xFF0000FF, Pixels::EAlpha::None);
    for (std::int32_t y = 0; y < 9; ++y) {
        for (std::int32_t x = 0; x < 9; ++x) {
            const bool atSide = x < 3 || x >= 6;
            const bool atTop = y < 3 || y >= 6;
            const std::uint32_t colour = atSide && atTop ? Red : Green;
            if (atSide || atTop)
                std::memcpy(&picture.bytes[static_cast<std::size_t>(y * picture.stride + 4 * x)], &colour, 4);
        }
    }
    const auto texture = MakeTexture(gpu, picture);
    SDraw9 draw;
    draw.sTo = {10, 5, 40, 30};
    draw.nMrgL = draw.nMrgT = draw.nMrgR = draw.nMrgB = 3;
    draw.fValue = 1.0f;
    Draw([&] { gpu.DrawTexture9(texture, draw); });
    const std::array<std::array<std::int32_t, 2>, 4> corners{{{10, 5}, {49, 5}, {10, 34}, {49, 34}}};
    for (const auto& [x, y] : corners) EXPECT_EQ(Pixel(x, y), Red) << x << ", " << y;
    EXPECT_EQ(Pixel(12, 7), Red) << "a corner keeps its size";
    EXPECT_EQ(Pixel(47, 32), Red);
    for (const auto& [x, y] : std::vector<std::array<int, 2>>{{30, 6}, {11, 20}, {48, 20}, {30, 33}})
        EXPECT_EQ(Pixel(x, y), Green) << x << ", " << y;
    EXPECT_EQ(Pixel(30, 20), 0xFF0000FFu);
    EXPECT_EQ(Pixel(9, 5), Black);
    EXPECT_EQ(Pixel(50, 34), Black);
}

// Lines

TEST_F(GdiplusData, DrawsLinesThroughTheCentresOfPixels) {
    Draw([&] { Line(10.5f, 12.5f, 30.5f, 12.5f); });
    EXPECT_EQ(Pixel(20, 12), White);
    EXPECT_EQ(Pixel(20, 11), Black);
    EXPECT_EQ(Pixel(20, 13), Black);
    EXPECT_EQ(Pixel(35, 12), Black);
    gpu.SetLineWidth(5.0f);
    Draw([&] { Line(10.5f, 12.5f, 30.5f, 12.5f); });
    int rows = 0;
    for (std::int32_t y = 0; y < Height; ++y) rows += Pixel(20, y) == White ? 1 : 0;
    EXPECT_EQ(rows, 5);
}

TEST_F(GdiplusData, DrawsLinesInTheColourThatWasSetOrInThatOfTheFirstPoint) {
    gpu.SetLineColor(1.0f, 0.5f, 0.999f, 1.0f);
    Draw([&] { Line(10.5f, 12.5f, 30.5f, 12.5f); });
    EXPECT_EQ(Pixel(20, 12), 0xFFFF7FFEu) << "components are cut, not rounded";
    gpu.SetLineColor(-1.0f, 2.0f, 0.0f, 1.0f);
    Draw([&] { Line(10.5f, 12.5f, 30.5f, 12.5f); });
    EXPECT_EQ(Pixel(20, 12), Green);
    Draw([&] { Line(10.5f, 12.5f, 30.5f, 12.5f, true, Red); });
    EXPECT_EQ(Pixel(11, 12), Red);
    EXPECT_EQ(Pixel(29, 12), Red);
}

TEST_F(GdiplusData, DrawsOneStripOrALineForEachPair) {
    const std::array points{SPoint{5.5f, 5.5f, 0, White}, SPoint{25.5f, 5.5f, 0, White},
        SPoint{25.5f, 25.5f, 0, White}, SPoint{45.5f, 25.5f, 0, White}, SPoint{50, 2, 0, White}};
    Draw([&] { gpu.DrawLines(4, points.data(), false, true); });
    EXPECT_EQ(Pixel(15, 5), White);
    EXPECT_EQ(Pixel(25, 15), White);
    EXPECT_EQ(Pixel(35, 25), White);
    Draw([&] { gpu.DrawLines(5, points.data(), false, false); }); // the fifth has no partner
    EXPECT_EQ(Pixel(15, 5), White);
    EXPECT_EQ(Pixel(25, 15), Black);
    EXPECT_EQ(Pixel(35, 25), White);
    Draw([&] {
        gpu.DrawLines(0, points.data(), false, true);
        gpu.DrawLines(-1, points.data(), false, true);
        gpu.DrawLines(4, nullptr, false, true);
    });
    EXPECT_TRUE(IsAll(Black));
}

TEST_F(GdiplusData, AsksForSmoothLinesWhenTheyAreWanted) {
    // Wine draws them all hard, so that only the request can be seen there.
    const int before = gdi.Calls("GdipSetSmoothingMode");
    gpu.SetLineSmooth(true);
    gpu.SetLineSmooth(false);
    EXPECT_EQ(gdi.Calls("GdipSetSmoothingMode"), before + 2);
}

// Textures

TEST_F(GdiplusData, SetsNothingOfARecordButItsHandle) {
    const STexture record{0, 2, 2, 0.5f, 0.25f, 3, 4, 5, 6};
    auto texture = record;
    gpu.CreateTexture(Plain(2, 2, White), texture, 2, 2);
    EXPECT_NE(texture.piGDIP, 0u);
    texture.piGDIP = 0;
    EXPECT_EQ(texture, record);
    const std::array<std::uint32_t, 4> bits{};
    gpu.CreateTextureBits(bits.data(), 8, Argb32, texture, 2, 2, 2, 2);
    EXPECT_NE(texture.piGDIP, 0u);
    texture.piGDIP = 0;
    EXPECT_EQ(texture, record);
}

TEST_F(GdiplusData, MakesTexturesOfPixelsInEachFormat) {
    const std::vector<std::uint32_t> bits(16, 0x80404000);
    const auto look = [&](std::int32_t pitch, std::int32_t format) {
        const auto texture = TextureOfBits(bits.data(), pitch, format, 4);
        Draw([&] { gpu.DrawTexture(texture, At(0, 0, 4, 4)); });
        return Pixel(1, 1);
    };
    EXPECT_EQ(look(16, Argb32), 0xFF202000u);
    EXPECT_EQ(look(16, PremultipliedArgb32), 0xFF404000u);
    EXPECT_EQ(look(16, Rgb32), 0xFF404000u);
    EXPECT_NE(look(12, Rgb24), Black);
}

TEST_F(GdiplusData, LeavesATextureBlankWhosePitchOrHeightIsNotItsOwn) {
    std::vector<std::uint32_t> bits(64, 0xFFFFFFFF);
    const auto look = [&](const void* pixels, std::int32_t pitch, std::int32_t height) {
        const auto texture = TextureOfBits(pixels, pitch, Argb32, height);
        EXPECT_NE(texture.piGDIP, 0u);
        const auto green = Texture(Green);
        Draw([&] {
            gpu.DrawTexture(green, At(0, 0, 4, 4));
            gpu.DrawTexture(texture, At(0, 0, 4, 4));
        });
        return Pixel(1, 1);
    };
    EXPECT_EQ(look(bits.data(), 16, 4), White);
    EXPECT_EQ(look(bits.data(), 20, 4), Green);
    EXPECT_EQ(look(bits.data(), 16, 3), Green);
    EXPECT_EQ(look(bits.data(), 16, -4), Green);
    EXPECT_EQ(look(nullptr, 16, 4), Green);
}

TEST_F(GdiplusData, KeepsThePixelsOfATextureWhateverHappensToTheirSource) {
    std::vector<std::uint32_t> bits(16, Red);
    const auto ofBits = TextureOfBits(bits.data(), 16, Argb32, 4);
    bits.assign(16, Green);
    auto bitmap = std::make_unique<Pixels::SBitmap>(Plain(4, 4, Red));
    const auto ofBitmap = MakeTexture(gpu, *bitmap);
    std::fill(bitmap->bytes.begin(), bitmap->bytes.end(), std::uint8_t{0});
    bitmap.reset();
    Draw([&] {
        gpu.DrawTexture(ofBits, At(0, 0, 4, 4));
        gpu.DrawTexture(ofBitmap, At(8, 0, 4, 4));
    });
    EXPECT_EQ(Pixel(1, 1), Red);
    EXPECT_EQ(Pixel(9, 1), Red);
}

TEST_F(GdiplusData, DrawsNothingWithoutATexture) {
    Draw([&] {
        gpu.DrawTexture({}, At(0, 0, 4, 4));
        gpu.DrawTexture9({}, {});
    });
    EXPECT_TRUE(IsAll(Black));
    STexture none;
    gpu.FreeTexture(none);
    EXPECT_EQ(none, FreedTexture());
}

TEST_F(GdiplusData, FreesATextureAtOnceAndTheRestAtItsEnd) {
    const int before = gdi.Left()["image"];
    auto one = Texture(Red);
    const auto other = Texture(Green);
    EXPECT_EQ(gdi.Left()["image"], before + 2);
    gpu.FreeTexture(one);
    EXPECT_EQ(one, FreedTexture());
    EXPECT_EQ(gdi.Left()["image"], before + 1);
    Draw([&] { gpu.DrawTexture(other, At(0, 0, 4, 4)); });
    EXPECT_EQ(Pixel(1, 1), Green);
}

TEST_F(GdiplusData, MakesABackdropOfTheFrame) {
    const auto scene = MakeTexture(gpu, Backdrop(Width, Height));
    Draw([&] { gpu.DrawTexture(scene, At(0, 0, Width, Height)); });
    const auto before = FrameOf(gpu, Width, Height);
    STexture backdrop;
    gpu.MakeBackdrop(backdrop, Width, Height);
    ASSERT_NE(backdrop.piGDIP, 0u);
    Draw([&] { gpu.DrawTexture(backdrop, At(0, 0, Width, Height)); });
    const auto difference = DifferenceOf(FrameOf(gpu, Width, Height), before);
    EXPECT_GT(difference.most, 0) << "it is blurred";
    EXPECT_LT(difference.mean, 8.0);
}

// Stored pictures

namespace {

/// A stored picture of two columns and one row, whose cells have their size in their colour.
class CSizedSheet final : public Pixels::ISheet {
public:
    std::int32_t Width() const noexcept override { return 16; }
    std::int32_t Height() const noexcept override { return 8; }
    const Pixels::SImageGrid& Grid() const noexcept override { return _grid; }
    std::shared_ptr<const Pixels::SBitmap> Cells(std::int32_t width, std::int32_t height) const override {
        ++made;
        if (isDamaged) throw Exceptions::GDIPImage(u"Dial", 8, 8, 2);
        if (isWithoutMemory) throw std::bad_alloc();
        auto cells = std::make_shared<Pixels::SBitmap>(Plain(2 * width, height,
            Black | static_cast<std::uint32_t>(width) << 8 | static_cast<std::uint32_t>(height),
            Pixels::EAlpha::Premultiplied));
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = width; x < 2 * width; ++x) // the right cell has more red
                cells->bytes[static_cast<std::size_t>(y * cells->stride + 4 * x + 2)] = 0xFF;
        }
        return cells;
    }
    Pixels::SBitmap Decoded() const override {
        if (isWithoutMemory) throw std::bad_alloc();
        return Plain(16, 8, White);
    }

    mutable int made = 0;
    bool isDamaged = false;
    bool isWithoutMemory = false;

private:
    Pixels::SImageGrid _grid{2, 2, 1};
};

STexture MakeSheet(GPU& gpu, const std::shared_ptr<CSizedSheet>& sheet) {
    Pixels::SBitmap bitmap;
    bitmap.width = sheet->Width();
    bitmap.height = sheet->Height();
    bitmap.sheet = sheet;
    return MakeTexture(gpu, bitmap, 2, 1);
}

SDraw Cell(const STexture& texture, std::int32_t column, SDraw draw) {
    draw.sFrom = CellOf(texture, column, 0);
    return draw;
}

} // namespace

TEST_F(GdiplusData, DrawsACellFromOneThatHasBeenScaledToItsSize) {
    const auto sheet = std::make_shared<CSizedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    EXPECT_EQ(sheet->made, 0) << "not before it is drawn";
    for (int n = 0; n < 3; ++n) {
        Draw([&] {
            gpu.DrawTexture(texture, Cell(texture, 0, At(0, 0, 13, 9)));
            gpu.DrawTexture(texture, Cell(texture, 1, At(20, 0, 13, 9)));
        });
    }
    EXPECT_EQ(sheet->made, 1);
    const auto frame = FrameOf(gpu, Width, Height);
    for (std::int32_t x = 0; x < 40; ++x) {
        const std::uint32_t expected = x < 13 ? 0xFF000D09 : x >= 20 && x < 33 ? 0xFFFF0D09 : Black;
        ASSERT_EQ(frame[static_cast<std::size_t>(4 * Width + x)], expected) << x;
    }
}

TEST_F(GdiplusData, MakesNoNewSizeWhileItStretches) {
    const auto sheet = std::make_shared<CSizedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    const auto draw = [&](float width) {
        Draw([&] { gpu.DrawTexture(texture, Cell(texture, 0, At(0, 0, width, 10))); });
        return Pixel(2, 2);
    };
    gpu.SetStretching(true);
    EXPECT_EQ(draw(10), 0xFF000A0Au) << "the first size is made all the same";
    EXPECT_EQ(draw(20), 0xFF000A0Au);
    EXPECT_EQ(Pixel(18, 8), 0xFF000A0Au);
    EXPECT_EQ(sheet->made, 1);
    gpu.SetStretching(false);
    EXPECT_EQ(draw(20), 0xFF00140Au);
    EXPECT_EQ(sheet->made, 2);
}

TEST_F(GdiplusData, DrawsWhatIsNoCellAtWholePixelsFromThePictureAsStored) {
    const auto sheet = std::make_shared<CSizedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    auto part = At(0, 0, 20, 20);
    part.sFrom = {0.25f, 0.75f, 0.0f, 1.0f};
    Draw([&] {
        gpu.DrawTexture(texture, part);
        gpu.DrawTexture(texture, Cell(texture, 0, At(30, 0, 10.4f, 9.6f)));
    });
    EXPECT_EQ(Pixel(10, 10), White);
    EXPECT_EQ(Pixel(35, 5), White);
    EXPECT_EQ(sheet->made, 0);
}

TEST_F(GdiplusData, PassesOnThatAPictureCannotBeDecoded) {
    const auto sheet = std::make_shared<CSizedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    auto turned = Cell(texture, 0, At(0, 0, 10, 10, 0xFFFF8080));
    turned.sTransform.fMX = 20.0f;
    sheet->isDamaged = true;
    EXPECT_THROW(gpu.DrawTexture(texture, turned), Exceptions::GDIPImage);
    sheet->isDamaged = false;
    Draw([&] { gpu.DrawTexture(texture, Cell(texture, 0, At(0, 0, 10, 10))); });
    EXPECT_EQ(Pixel(2, 2), 0xFF000A0Au) << "and the transform of the draw that failed is undone";
}

TEST_F(GdiplusData, LosesOneQuadAndLogsItWithoutMemory) {
    const auto sheet = std::make_shared<CSizedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    const auto red = Texture(Red);
    sheet->isWithoutMemory = true;
    const CAddedLog log;
    SDraw9 slices;
    slices.sTo = {0, 20, 10, 10};
    Draw([&] {
        gpu.DrawTexture(texture, Cell(texture, 0, At(0, 0, 10, 10)));
        gpu.DrawTexture9(texture, slices);
        gpu.DrawTexture(red, At(20, 0, 4, 4));
    });
    EXPECT_EQ(Pixel(1, 1), Black);
    EXPECT_EQ(Pixel(21, 1), Red);
    const std::string begin = "Error=_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(";
    EXPECT_EQ(log.Text(),
        begin +
            "a_fL, a_fT, a_fW, a_fH), a_fU1 * a_rsTexture.nW, a_fV1 * a_rsTexture.nH, (a_fU2 - a_fU1) * "
            "a_rsTexture.nW, (a_fV2 - a_fV1) * a_rsTexture.nH, Gdiplus::Unit::UnitPixel, piAttr):3\r\n" +
            begin +
            "a_fL, fDstT, a_nMrgL, fDstH), 0, fSrcT, fMrgL_01 * a_rsTexture.nW, fSrcH, "
            "Gdiplus::Unit::UnitPixel, piAttr):3\r\n");
}

// Failures

TEST_F(GdiplusData, LogsTheCallThatFailed) {
    const auto red = Texture(Red);
    auto turned = At(0, 0, 4, 4);
    turned.sTransform.fRZ = 10.0f;
    const std::vector<std::uint32_t> bits(16, Red);
    const std::array points{SPoint{1, 1, 0, White}, SPoint{9, 9, 0, White}};
    struct SCase {
        std::string_view function;
        std::function<void()> call;
        std::string line;
    };
    const std::vector<SCase> cases{
        {"GdipGraphicsClear", [&] { gpu.Clear(); }, "_piGdipBB->Clear(Gdiplus::Color::Black)"},
        {"GdipDrawImageRectRect", [&] { gpu.DrawTexture(red, At(0, 0, 4, 4)); },
            "_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(a_fL, a_fT, a_fW, a_fH), a_fU1 * "
            "a_rsTexture.nW, a_fV1 * a_rsTexture.nH, (a_fU2 - a_fU1) * a_rsTexture.nW, (a_fV2 - a_fV1) * "
            "a_rsTexture.nH, Gdiplus::Unit::UnitPixel, piAttr)"},
        {"GdipDrawLines", [&] { gpu.DrawLines(2, points.data(), false, true); },
            "_piGdipBB->DrawLines(&iPen, _pviGdipLinePoints, a_nPoints)"},
        {"GdipDrawLine", [&] { gpu.DrawLines(2, points.data(), false, false); },
            "_piGdipBB->DrawLine(&iPen, _pviGdipLinePoints[n], _pviGdipLinePoints[n + 1])"},
        {"GdipCreatePen1", [&] { gpu.DrawLines(2, points.data(), false, true); },
            "Gdiplus::Pen iPen(nColor, _fLineWidth)"},
        {"GdipBitmapLockBits", [&] { FrameOf(gpu, 4, 4); },
            "_piBB->LockBits(nullptr, 0, _piBB->GetPixelFormat(), &iImageData)"},
        {"GdipBitmapLockBits", [&] { TextureOfBits(bits.data(), 16, Argb32, 4); },
            "a_rsTexture.piGDIP->LockBits(nullptr, 0, a_nPixelFormat, &iImageData)"},
        {"GdipSetClipRect", [&] { gpu.SetClip(1, 1, 5, 5); },
            "_piGdipBB->SetClip(Gdiplus::RectF(a_fL, a_fT, a_fW, a_fH))"},
        {"GdipResetClip", [&] { gpu.SetClip(1, 1, 0, 5); }, "_piGdipBB->ResetClip()"},
        {"GdipSetSmoothingMode", [&] { gpu.SetLineSmooth(true); }, "_piGdipBB->SetSmoothingMode(nMode)"},
        {"GdipCreateMatrix2", [&] { gpu.DrawTexture(red, turned); },
            "Gdiplus::Matrix iMatrix(m11, m12, m21, m22, dx, dy)"},
        {"GdipSetWorldTransform", [&] { gpu.DrawTexture(red, turned); }, "_piGdipBB->SetTransform(&iMatrix)"},
        {"GdipResetWorldTransform", [&] { gpu.DrawTexture(red, turned); }, "_piGdipBB->ResetTransform()"},
        {"GdipCreateImageAttributes", [&] { gpu.DrawTexture(red, At(0, 0, 4, 4, Green)); },
            "Gdiplus::ImageAttributes iAttr"},
        {"GdipSetImageAttributesColorMatrix", [&] { gpu.DrawTexture(red, At(0, 0, 4, 4, Green)); },
            "iAttr.SetColorMatrix(&sColorMatrix)"},
        {"GdipCreateBitmapFromScan0",
            [&] { gpu.CreateTexture(Plain(4, 4, Red), *std::make_unique<STexture>(), 4, 4); },
            "a_piBitmap->Clone(0, 0, a_nTexW, a_nTexH, a_piBitmap->GetPixelFormat())"}};
    for (const auto& [function, call, line] : cases) {
        const auto number = function == "GdipCreateBitmapFromScan0" ? ":3\r\n" : ":2\r\n";
        EXPECT_EQ(LogOf(function, call), "Error=" + line + number);
    }
}

TEST_F(GdiplusData, LogsTheUnlockThatFailedAndKeepsThePixels) {
    const std::vector<std::uint32_t> bits(16, Red);
    EXPECT_EQ(LogOf("GdipBitmapUnlockBits", [&] { TextureOfBits(bits.data(), 16, Argb32, 4); }),
        "Error=a_rsTexture.piGDIP->UnlockBits(&iImageData):2\r\n");
    Frame frame;
    Draw([&] { gpu.DrawTexture(Texture(Red), At(0, 0, 4, 4)); });
    EXPECT_EQ(LogOf("GdipBitmapUnlockBits", [&] { frame = FrameOf(gpu, 4, 4); }),
        "Error=_piBB->UnlockBits(&iImageData):2\r\n");
    EXPECT_EQ(frame, Frame(16, Red));
}

TEST_F(GdiplusData, LogsEachOfNineSlicesByItself) {
    const auto red = Texture(Red, 9);
    SDraw9 draw;
    draw.sTo = {0, 0, 30, 30};
    draw.nMrgL = draw.nMrgT = draw.nMrgR = draw.nMrgB = 3;
    const std::string begin = "Error=_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(";
    const std::string end = ", fSrcH, Gdiplus::Unit::UnitPixel, piAttr):2\r\n";
    // Three lines for nine quads: the same line comes once a second at most.
    EXPECT_EQ(LogOf("GdipDrawImageRectRect", [&] { gpu.DrawTexture9(red, draw); }),
        begin + "a_fL, fDstT, a_nMrgL, fDstH), 0, fSrcT, fMrgL_01 * a_rsTexture.nW" + end + begin +
            "a_fL + a_nMrgL, fDstT, a_fW - a_nMrgL - a_nMrgR, fDstH), fMrgL_01 * a_rsTexture.nW, fSrcT, "
            "(1 - fMrgL_01 - fMrgR_01) * a_rsTexture.nW" +
            end + begin +
            "a_fL + a_fW - a_nMrgR, fDstT, a_nMrgR, fDstH), (1 - fMrgR_01) * a_rsTexture.nW, fSrcT, "
            "fMrgR_01 * a_rsTexture.nW" +
            end);
}

TEST_F(GdiplusData, GoesOnAfterADrawThatFailed) {
    const auto red = Texture(Red);
    gpu.Clear();
    gdi.Fail("GdipDrawImageRectRect", Gdiplus::GenericError);
    gpu.DrawTexture(red, At(0, 0, 4, 4));
    gdi.Fail("GdipDrawImageRectRect", Gdiplus::Ok);
    gpu.DrawTexture(red, At(10, 0, 4, 4));
    EXPECT_EQ(Pixel(1, 1), Black);
    EXPECT_EQ(Pixel(11, 1), Red);
    EXPECT_TRUE(gpu.IsReady());
}

TEST_F(GdiplusData, LogsATextureThatItCannotMake) {
    STexture texture;
    EXPECT_EQ(LogOf("GdipCreateBitmapFromScan0",
                  [&] { gpu.CreateTextureBits(nullptr, 16, Argb32, texture, 4, 4, 4, 4); }),
        "Error=a_rsTexture.piGDIP->LockBits(nullptr, 0, a_nPixelFormat, &iImageData):2\r\n");
    EXPECT_EQ(texture.piGDIP, 0u);
    const CAddedLog log;
    auto torn = Plain(4, 4, White);
    torn.bytes.resize(63);
    gpu.CreateTexture(torn, texture, 4, 4);
    gpu.CreateTexture({}, texture, 0, 0);
    EXPECT_EQ(texture.piGDIP, 0u);
    EXPECT_EQ(
        log.Text(), "Error=a_piBitmap->Clone(0, 0, a_nTexW, a_nTexH, a_piBitmap->GetPixelFormat()):2\r\n");
}

TEST_F(GdiplusData, IsNotReadyIfItsLibraryDoesNotStart) {
    own.reset();
    const CAddedLog log;
    gdi.Fail("GdiplusStartup", Gdiplus::UnsupportedGdiplusVersion);
    CPU::DATA broken({nullptr, Width, Height});
    EXPECT_EQ(
        log.Text(), "Error=Gdiplus::GdiplusStartup(&nGdipToken, &s_GdiplusStartupInput, nullptr):17\r\n");
    EXPECT_FALSE(broken.IsReady());
    const auto texture = MakeTexture(broken, Plain(2, 2, White));
    EXPECT_EQ(texture.piGDIP, 0u);
    const std::array<std::uint32_t, 4> bits{};
    STexture other;
    broken.CreateTextureBits(bits.data(), 8, Argb32, other, 2, 2, 2, 2);
    EXPECT_EQ(other.piGDIP, 0u);
    broken.BeginFrame();
    broken.Clear();
    broken.SetClip(1, 1, 1, 1);
    broken.SetLineSmooth(true);
    const std::array points{SPoint{1, 1, 0, White}, SPoint{9, 9, 0, White}};
    broken.DrawLines(2, points.data(), false, true);
    broken.EndFrame();
    broken.Present();
    broken.Resize(5, 5);
    EXPECT_FALSE(broken.IsReady());
    EXPECT_FALSE(broken.Shutdown());
    EXPECT_EQ(gdi.Calls("GdipCreateBitmapFromScan0"), gdi.Calls("GdipDisposeImage"));
}

TEST_F(GdiplusData, IsNotReadyWithoutAFrame) {
    for (const std::string_view function : {"GdipCreateBitmapFromScan0", "GdipGetImageGraphicsContext"}) {
        const CAddedLog log;
        gdi.Fail(function, Gdiplus::OutOfMemory);
        const CPU::DATA broken({nullptr, Width, Height});
        gdi.Fail(function, Gdiplus::Ok);
        EXPECT_FALSE(broken.IsReady());
        const std::string call = function == "GdipCreateBitmapFromScan0"
                                     ? "new Gdiplus::Bitmap(a_nW, a_nH, PixelFormat32bppRGB)"
                                     : "Gdiplus::Graphics::FromImage(_piBB)";
        EXPECT_NE(log.Text().find("Error=" + call + ":3\r\n"), std::string::npos) << log.Text();
    }
}

TEST_F(GdiplusData, EndsItsLibraryWithTheLastOfThem) {
    {
        const CPU::DATA other({nullptr, 1, 1});
        EXPECT_EQ(gdi.Calls("GdiplusStartup"), 1);
    }
    EXPECT_EQ(gdi.Calls("GdiplusShutdown"), 0);
    own.reset();
    EXPECT_EQ(gdi.Calls("GdiplusShutdown"), 1);
}

// The same scenes as elsewhere

namespace {

/// The scenes that GDI+ can draw, and how near Wine's comes to the plain renderer. It scales between pixels
/// in its own way and without soft edges, so that single pixels along an edge may have any colour. It repeats
/// no pictures, and its lines have one colour.
const std::map<std::string, SCloseness>& Closeness() {
    static const std::map<std::string, SCloseness> closeness{{"own_size", {2, 0.05}}, {"cells", {1, 0.06}},
        {"parts", {1, 0.02}}, {"tints", {2, 0.5}}, {"quarter_turns", {128, 2.4}}, {"scaled", {128, 0.9}},
        {"between_pixels", {128, 0.8}}, {"turned", {128, 1.4}}, {"transformed", {128, 0.6}},
        {"nine_slices", {255, 2.6}}, {"clipped", {160, 0.25}}, {"hard_lines", {255, 0.4}},
        {"smooth_lines", {160, 1.5}}};
    return closeness;
}

std::vector<SScene> DrawnScenes() {
    std::vector<SScene> drawn;
    for (const auto& scene : Scenes()) {
        if (Closeness().contains(scene.name)) drawn.push_back(scene);
    }
    return drawn;
}

class GdiplusScenes : public testing::TestWithParam<SScene> {};

} // namespace

TEST_P(GdiplusScenes, LookAsThePlainRendererDrawsThem) {
    CPU::DATA gpu({nullptr, SceneWidth, SceneHeight});
    DrawScene(gpu, GetParam());
    CPlainRenderer plain(SceneWidth, SceneHeight);
    DrawScene(plain, GetParam());
    const auto difference = DifferenceOf(FrameOf(gpu), FrameOf(plain));
    EXPECT_LE(difference.most, Closeness().at(GetParam().name).most);
    EXPECT_LE(difference.mean, Closeness().at(GetParam().name).mean);
}

INSTANTIATE_TEST_SUITE_P(
    All, GdiplusScenes, testing::ValuesIn(DrawnScenes()), [](const auto& scene) { return scene.param.name; });
