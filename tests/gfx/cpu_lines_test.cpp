#include "tests/gfx/cpu_fixture.h"

#include <algorithm>
#include <array>
#include <limits>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

using CpuLines = CpuData;

TEST_F(CpuLines, DrawsLinesOfTwoPointsAtLeast) {
    const std::array points{
        SPoint{5.5f, 5.5f, 0, White}, SPoint{5.5f, 5.5f, 0, White}, SPoint{9, 5.5f, 0, White}};
    Draw([&] {
        gpu.DrawLines(0, points.data(), false, true);
        gpu.DrawLines(-3, points.data(), false, true);
        gpu.DrawLines(1, points.data(), false, true);
        gpu.DrawLines(2, nullptr, false, true);
        gpu.DrawLines(2, points.data(), false, true); // both are one
    });
    EXPECT_TRUE(IsBlack());
    Draw([&] { gpu.DrawLines(3, points.data(), false, true); });
    EXPECT_EQ(Pixel(7, 5), White);
}

TEST_F(CpuLines, RunsALineThroughTheCentresOfAColumn) {
    for (const bool smooth : {false, true}) {
        gpu.SetLineSmooth(smooth);
        const std::array points{SPoint{10.5f, 5, 0, White}, SPoint{10.5f, 15, 0, White}};
        Draw([&] { gpu.DrawLines(2, points.data(), false, true); });
        EXPECT_EQ(Pixel(10, 5), White);
        EXPECT_EQ(Pixel(10, 14), White);
        EXPECT_EQ(Pixel(10, 4), Black);
        EXPECT_EQ(Pixel(10, 15), Black);
        EXPECT_EQ(Pixel(9, 10), Black);
        EXPECT_EQ(Pixel(11, 10), Black);
    }
}

TEST_F(CpuLines, FillsAnAreaWithHardLinesSideBySide) {
    std::vector<SPoint> fill;
    for (int x = 0; x < 20; ++x) {
        const auto at = static_cast<float>(x + 10);
        fill.push_back({at, x % 2 == 0 ? 30.0f : 10.0f, 0, 0x80FFFFFF});
        fill.push_back({at, x % 2 == 0 ? 10.0f : 30.0f, 0, 0x80FFFFFF});
    }
    Draw([&] { gpu.DrawLines(static_cast<std::int32_t>(fill.size()), fill.data(), true, true); });
    for (std::int32_t y = 10; y < 30; ++y) {
        for (std::int32_t x = 10; x < 30; ++x) ASSERT_EQ(Pixel(x, y), 0xFF808080u) << x << ", " << y;
    }
}

TEST_F(CpuLines, PaintsNoPixelOfAStripTwice) {
    gpu.SetLineSmooth(true);
    gpu.SetLineWidth(6.0f);
    gpu.SetLineColor(1.0f, 1.0f, 1.0f, 0.5f);
    // There and back and across itself.
    const std::array points{SPoint{10, 10, 0, White}, SPoint{50, 20, 0, White}, SPoint{10, 30, 0, White},
        SPoint{30, 5, 0, White}, SPoint{31, 35, 0, White}};
    Draw([&] { gpu.DrawLines(5, points.data(), false, true); });
    std::uint32_t brightest = 0;
    for (const auto pixel : FrameOf(gpu, Width, Height)) brightest = std::max(brightest, pixel & 0xFF);
    EXPECT_EQ(brightest, 0x7Fu);
}

TEST_F(CpuLines, PaintsEachPairOfPointsByItself) {
    gpu.SetLineWidth(4.0f);
    gpu.SetLineColor(1.0f, 1.0f, 1.0f, 0.5f);
    const std::array points{SPoint{10, 20, 0, White}, SPoint{50, 20, 0, White}, SPoint{30, 5, 0, White},
        SPoint{30, 35, 0, White}, SPoint{0, 0, 0, White}};
    Draw([&] { gpu.DrawLines(5, points.data(), false, false); });
    EXPECT_EQ(Pixel(15, 20) & 0xFF, 0x7Fu);
    EXPECT_EQ(Pixel(30, 20) & 0xFF, 0xBFu); // 127 + 127 x 128 / 255
    EXPECT_EQ(Pixel(5, 5), Black); // no way from one pair to the next, nor to a point without a partner
    EXPECT_EQ(Pixel(40, 12), Black);
}

TEST_F(CpuLines, TakesTheColourOfLinesInWholeStepsRoundedDown) {
    const std::array points{SPoint{5, 5.5f, 0, White}, SPoint{15, 5.5f, 0, White}};
    const auto look = [&](float r, float g, float b, float a) {
        gpu.SetLineColor(r, g, b, a);
        Draw([&] { gpu.DrawLines(2, points.data(), false, true); });
        return Pixel(10, 5);
    };
    EXPECT_EQ(Pixel(0, 0), Black);
    EXPECT_EQ(look(1.0f, 0.22352941f, 0.40784314f, 1.0f), 0xFFFF3968u);
    EXPECT_EQ(look(0.999f, 0.5f, 0.001f, 1.0f), 0xFFFE7F00u);
    EXPECT_EQ(look(2.0f, -1.0f, std::numeric_limits<float>::quiet_NaN(), 5.0f), 0xFFFF0000u);
    EXPECT_EQ(look(1.0f, 1.0f, 1.0f, 0.0f), Black);
}

TEST_F(CpuLines, DrawsWhiteLinesOfOnePixelUnlessToldOtherwise) {
    const std::array points{SPoint{5, 5.5f, 0, 0}, SPoint{15, 5.5f, 0, 0}};
    Draw([&] { gpu.DrawLines(2, points.data(), false, true); });
    EXPECT_EQ(Pixel(10, 5), White);
    EXPECT_EQ(Pixel(10, 4), Black);
    EXPECT_EQ(Pixel(10, 6), Black);
}

TEST_F(CpuLines, BlendsTheColoursOfPointsAlongTheLine) {
    const std::array points{SPoint{0, 5.5f, 0, 0xFFFF0000}, SPoint{51, 5.5f, 0, 0x000000FF}};
    Draw([&] { gpu.DrawLines(2, points.data(), true, true); });
    for (std::int32_t x = 0; x < 51; ++x) {
        const double share = (x + 0.5) / 51.0;
        const double alpha = 1.0 - share;
        const auto pixel = Pixel(x, 5);
        EXPECT_NEAR(static_cast<double>(pixel >> 16 & 0xFF), 255.0 * (1.0 - share) * alpha, 1.0);
        EXPECT_NEAR(static_cast<double>(pixel & 0xFF), 255.0 * share * alpha, 1.0);
    }
}
