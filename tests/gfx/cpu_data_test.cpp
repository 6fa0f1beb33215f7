#include "tests/gfx/cpu_fixture.h"
#include "tests/support/added_log.h"

#include <array>
#include <limits>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

TEST_F(CpuData, IsReadyAndTakesTexturesOfAnySize) {
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

TEST_F(CpuData, LogsTheVersionOfItsLibrary) {
    const CAddedLog log;
    const CPU::DATA other({nullptr, 1, 1});
    EXPECT_EQ(log.Text().find("Pixman=v0."), 0u) << log.Text();
    EXPECT_EQ(log.Text().find("\r\n"), log.Text().size() - 2);
}

TEST_F(CpuData, HasAFrameOfOnePixelAtLeast) {
    CPU::DATA small({nullptr, 0, -5});
    EXPECT_TRUE(small.IsReady());
    EXPECT_EQ(FrameOf(small, 1, 1), Frame(1, Black));
}

TEST_F(CpuData, IsNotReadyWithoutMemoryForTheFrame) {
    const CAddedLog log;
    CPU::DATA huge(
        {nullptr, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::max()});
    EXPECT_FALSE(huge.IsReady());
    EXPECT_NE(log.Text().find("Error=pixman_image_create_bits_no_clear("), std::string::npos);
    STexture texture = MakeTexture(huge, Plain(2, 2, White));
    huge.BeginFrame();
    huge.Clear();
    huge.DrawTexture(texture, At(0, 0, 2, 2));
    huge.EndFrame();
    huge.Present();
    huge.SetClip(1, 1, 1, 1);
    EXPECT_FALSE(huge.Shutdown());
}

TEST_F(CpuData, StartsAndClearsToOpaqueBlack) {
    EXPECT_TRUE(IsBlack());
    const auto texture = MakeTexture(gpu, Plain(Width, Height, 0xFF102030));
    Draw([&] { gpu.DrawTexture(texture, At(0, 0, Width, Height)); });
    EXPECT_FALSE(IsBlack());
    Draw([] {});
    EXPECT_TRUE(IsBlack());
    Draw([&] {
        gpu.DrawTexture(texture, At(0, 0, Width, Height));
        gpu.SetClip(5, 5, 1, 1);
        gpu.Clear(); // all of it
    });
    gpu.SetClip(0, 0, 0, 0);
    EXPECT_TRUE(IsBlack());
}

TEST_F(CpuData, LaysAFrameWithoutAClearOverTheOneBefore) {
    const auto red = MakeTexture(gpu, Plain(4, 4, 0xFFFF0000));
    const auto half = MakeTexture(gpu, Plain(4, 4, 0x800000FF));
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 4, 4)); });
    gpu.BeginFrame();
    gpu.EndFrame();
    EXPECT_EQ(Pixel(0, 0), 0xFFFF0000u);
    for (const std::uint32_t expected : {0xFF7F0080u, 0xFF3F00C0u}) {
        gpu.BeginFrame();
        gpu.DrawTexture(half, At(0, 0, 4, 4));
        gpu.EndFrame();
        EXPECT_EQ(Pixel(0, 0), expected);
    }
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 4, 4)); });
    EXPECT_EQ(Pixel(0, 0), 0xFFFF0000u);
}

TEST_F(CpuData, ReadsBackTheFrameAsItWasLastEnded) {
    const auto red = MakeTexture(gpu, Plain(Width, Height, 0xFFFF0000));
    Draw([&] { gpu.DrawTexture(red, At(0, 0, Width, Height)); });
    gpu.BeginFrame();
    gpu.Clear();
    EXPECT_EQ(Pixel(Width - 1, Height - 1), 0xFFFF0000u);
    gpu.EndFrame();
    EXPECT_TRUE(IsBlack());
}

TEST_F(CpuData, ReadsBackInAnySize) {
    const auto red = MakeTexture(gpu, Plain(Width, Height, 0xFFFF0000));
    Draw([&] { gpu.DrawTexture(red, At(0, 0, Width, Height)); });
    const auto larger = FrameOf(gpu, Width + 3, Height + 2);
    for (std::int32_t y = 0; y < Height + 2; ++y) {
        for (std::int32_t x = 0; x < Width + 3; ++x) {
            ASSERT_EQ(larger[static_cast<std::size_t>(y * (Width + 3) + x)],
                x < Width && y < Height ? 0xFFFF0000 : Black);
        }
    }
    EXPECT_EQ(FrameOf(gpu, 7, 5), Frame(35, 0xFFFF0000));
    gpu.ReadBack(nullptr, 5, 5);
    std::uint32_t untouched = 1;
    gpu.ReadBack(&untouched, 0, 1);
    gpu.ReadBack(&untouched, 1, -1);
    EXPECT_EQ(untouched, 1u);
}

TEST_F(CpuData, DropsAFrameThatIsBegunAgain) {
    const auto red = MakeTexture(gpu, Plain(Width, Height, 0xFFFF0000));
    gpu.BeginFrame();
    gpu.Clear();
    gpu.DrawTexture(red, At(0, 0, Width, Height));
    Draw([] {});
    EXPECT_TRUE(IsBlack());
}

TEST_F(CpuData, KeepsItsFrameWhenResizedToNothing) {
    const auto red = MakeTexture(gpu, Plain(Width, Height, 0xFFFF0000));
    Draw([&] { gpu.DrawTexture(red, At(0, 0, Width, Height)); });
    gpu.Resize(0, 10);
    gpu.Resize(10, 0);
    gpu.Resize(-1, 10);
    EXPECT_EQ(FrameOf(gpu, Width, Height), Frame(Width * Height, 0xFFFF0000));
}

TEST_F(CpuData, IsBlackAndWithoutAClipWhenResized) {
    const auto red = MakeTexture(gpu, Plain(90, 80, 0xFFFF0000));
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 90, 80)); });
    gpu.SetClip(1, 1, 1, 1);
    gpu.Resize(90, 80);
    EXPECT_EQ(FrameOf(gpu, 90, 80), Frame(90 * 80, Black));
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 90, 80)); });
    EXPECT_EQ(FrameOf(gpu, 90, 80), Frame(90 * 80, 0xFFFF0000));
}

TEST_F(CpuData, ShutsDownOnce) {
    auto red = MakeTexture(gpu, Plain(4, 4, 0xFFFF0000));
    EXPECT_TRUE(gpu.Shutdown());
    EXPECT_FALSE(gpu.IsReady());
    EXPECT_FALSE(gpu.Shutdown());
    Draw([&] { gpu.DrawTexture(red, At(0, 0, 4, 4)); });
    gpu.Present();
    gpu.Resize(10, 10);
    EXPECT_FALSE(gpu.IsReady());
    gpu.FreeTexture(red);
    EXPECT_EQ(red, FreedTexture());
}

TEST_F(CpuData, DrawsNothingInATransparentColour) {
    const auto red = MakeTexture(gpu, Plain(4, 4, 0xFFFF0000));
    Draw([&] {
        gpu.DrawTexture(red, At(0, 0, 4, 4, 0x00FFFFFF));
        SDraw9 slices;
        slices.sTo = {0, 0, 4, 4};
        slices.nColor = 0x00FFFFFF;
        gpu.DrawTexture9(red, slices);
        EXPECT_EQ(gpu.NotedDraws(), 0u);
    });
    EXPECT_TRUE(IsBlack());
}

TEST_F(CpuData, DrawsNothingWithNumbersThatMakeNoSense) {
    const auto red = MakeTexture(gpu, Plain(4, 4, 0xFFFF0000));
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float huge = std::numeric_limits<float>::max();
    for (const float bad : {infinity, -infinity, nan, huge, -huge, 1e9f, -1e9f}) {
        for (const auto field : {&SRect::fL, &SRect::fT, &SRect::fW, &SRect::fH}) {
            auto draw = At(0, 0, 4, 4);
            draw.sTo.*field = bad;
            SDraw9 slices;
            slices.sTo = draw.sTo;
            slices.nMrgL = slices.nMrgR = 1;
            Draw([&] {
                gpu.DrawTexture(red, draw);
                gpu.DrawTexture9(red, slices);
            });
            EXPECT_TRUE(IsBlack());
        }
        for (const auto field :
            {&STexturePart::fU1, &STexturePart::fU2, &STexturePart::fV1, &STexturePart::fV2}) {
            auto draw = At(0, 0, 4, 4);
            draw.sFrom.*field = bad;
            Draw([&] { gpu.DrawTexture(red, draw); });
            EXPECT_TRUE(IsBlack());
        }
        for (const auto field : {&STransform::fSX, &STransform::fSY, &STransform::fSZ, &STransform::fRX,
                 &STransform::fRY, &STransform::fRZ, &STransform::fMX, &STransform::fMY, &STransform::fMZ}) {
            auto draw = At(0, 0, 4, 4);
            draw.sTransform.*field = bad;
            Draw([&] { gpu.DrawTexture(red, draw); });
            EXPECT_TRUE(IsBlack());
        }
        for (const bool smooth : {false, true}) {
            gpu.SetLineSmooth(smooth);
            const std::array points{
                SPoint{1, 1, 0, White}, SPoint{bad, 9, 0, White}, SPoint{9, bad, 0, White}};
            Draw([&] {
                gpu.DrawLines(3, points.data(), false, true);
                gpu.DrawLines(2, points.data(), true, false);
            });
            EXPECT_TRUE(IsBlack());
            gpu.SetLineWidth(bad);
            const std::array good{SPoint{1, 1, 0, White}, SPoint{9, 9, 0, White}};
            Draw([&] { gpu.DrawLines(2, good.data(), false, true); });
            EXPECT_TRUE(IsBlack());
            gpu.SetLineWidth(1.0f);
        }
        gpu.SetClip(bad, 0, 4, 4);
        gpu.SetClip(0, bad, 4, 4);
        gpu.SetClip(0, 0, bad, 4);
        gpu.SetClip(0, 0, 4, bad);
        gpu.SetClip(0, 0, 0, 0);
    }
}

TEST_F(CpuData, DrawsWhatReachesFarBeyondTheFrame) {
    const auto red = MakeTexture(gpu, Plain(4, 4, 0xFFFF0000));
    auto turned = At(-400000, -400000, 800000, 800000);
    turned.sTransform.fRZ = 30.0f;
    Draw([&] { gpu.DrawTexture(red, turned); });
    EXPECT_EQ(FrameOf(gpu, Width, Height), Frame(Width * Height, 0xFFFF0000));
    gpu.SetLineSmooth(true);
    gpu.SetLineWidth(200.0f);
    const std::array points{SPoint{-900000, 20, 0, White}, SPoint{900000, 20, 0, White}};
    Draw([&] { gpu.DrawLines(2, points.data(), false, true); });
    EXPECT_EQ(FrameOf(gpu, Width, Height), Frame(Width * Height, White));
}

TEST_F(CpuData, DrawsNothingWithoutASize) {
    const auto red = MakeTexture(gpu, Plain(4, 4, 0xFFFF0000));
    Draw([&] {
        gpu.DrawTexture(red, At(5, 5, 0, 4));
        gpu.DrawTexture(red, At(5, 5, 4, 0));
        gpu.DrawTexture(red, At(5, 5, -4, 4));
        auto part = At(5, 5, 4, 4);
        part.sFrom = {0.5f, 0.5f, 0.0f, 1.0f};
        gpu.DrawTexture(red, part);
        part.sFrom = {0.0f, 1.0f, 1.0f, 0.0f};
        gpu.DrawTexture(red, part);
        auto flat = At(5, 5, 4, 4);
        flat.sTransform.fSX = 0.0f;
        gpu.DrawTexture(red, flat);
        flat = At(5, 5, 4, 4);
        flat.sTransform.fRY = 90.0f;
        gpu.DrawTexture(red, flat);
    });
    EXPECT_TRUE(IsBlack());
}

TEST_F(CpuData, TakesMarginsAsTheyAre) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(9, 7));
    const std::array<std::int32_t, 9> margins{0, 1, 3, 9, 50, -3, 100000,
        std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()};
    for (const auto left : margins) {
        for (const auto right : margins) {
            SDraw9 draw;
            draw.sTo = {5, 5, 30, 20};
            draw.nMrgL = left;
            draw.nMrgR = right;
            draw.nMrgT = right;
            draw.nMrgB = left;
            Draw([&] { gpu.DrawTexture9(spotted, draw); });
        }
    }
}

TEST_F(CpuData, DrawsNoMiddleOfNineSlicesThatHasNoSize) {
    auto picture = Plain(6, 6, 0xFF00FF00);
    const auto texture = MakeTexture(gpu, picture);
    SDraw9 draw;
    draw.sTo = {10, 10, 6, 20};
    draw.nMrgL = 4; // 4 + 4 in 6
    draw.nMrgR = 4;
    draw.nMrgT = draw.nMrgB = 1;
    Draw([&] {
        gpu.DrawTexture9(texture, draw);
        EXPECT_EQ(gpu.NotedDraws(), 6u);
    });
    EXPECT_EQ(Pixel(10, 10), 0xFF00FF00u);
    EXPECT_EQ(Pixel(15, 29), 0xFF00FF00u);
    EXPECT_EQ(Pixel(9, 10), Black);
    EXPECT_EQ(Pixel(16, 10), Black);
}

TEST_F(CpuData, DrawsNothingOutsideItsClip) {
    const auto red = MakeTexture(gpu, Plain(Width, Height, 0xFFFF0000));
    gpu.SetClip(10, 10, 5, 5);
    auto turned = At(0, 0, Width, Height);
    turned.sTransform.fRZ = 30.0f;
    const std::array points{SPoint{0, 0, 0, White}, SPoint{60, 40, 0, White}};
    gpu.SetLineWidth(20.0f);
    SDraw9 slices;
    slices.sTo = {0, 0, Width, Height};
    Draw([&] {
        gpu.DrawTexture(red, turned);
        gpu.DrawTexture9(red, slices);
        gpu.DrawLines(2, points.data(), false, true);
    });
    for (std::int32_t y = 0; y < Height; ++y) {
        for (std::int32_t x = 0; x < Width; ++x) {
            const bool inside = x >= 10 && y >= 10 && x < 15 && y < 15;
            ASSERT_TRUE(inside || Pixel(x, y) == Black) << x << ", " << y;
        }
    }
    EXPECT_NE(Pixel(12, 12), Black);
    gpu.SetClip(200, 200, 5, 5);
    Draw([&] { gpu.DrawTexture(red, turned); });
    EXPECT_TRUE(IsBlack());
}
