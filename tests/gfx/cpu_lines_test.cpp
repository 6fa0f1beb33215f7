#include "tests/gfx/cpu_fixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

using CpuLines = CpuData;

namespace {

/// A strip of upright lines, down and up by turns, as areas are filled.
std::vector<SPoint> Columns(
    float left, const std::vector<float>& steps, const std::vector<std::array<float, 2>>& ends) {
    std::vector<SPoint> points;
    float x = left;
    for (std::size_t n = 0; n < ends.size(); ++n) {
        const SPoint upper{x, ends[n][0], 0, 0x20FF8000};
        const SPoint lower{x, ends[n][1], 0, 0xC00080FF};
        points.push_back(n % 2 == 0 ? lower : upper);
        points.push_back(n % 2 == 0 ? upper : lower);
        x += steps[n % steps.size()];
    }
    return points;
}

/// A frame of a software renderer with these lines in it, over a backdrop, moved by some pixels.
Frame FrameWith(std::vector<SPoint> points, bool perVertex, bool smooth, float lineWidth,
    std::int32_t width = SceneWidth, std::int32_t height = SceneHeight, float across = 0, float down = 0) {
    CPU::DATA gpu({nullptr, width, height});
    for (auto& point : points) {
        point.fX += across;
        point.fY += down;
    }
    gpu.BeginFrame();
    gpu.Clear();
    gpu.SetLineSmooth(smooth);
    gpu.SetLineWidth(lineWidth);
    gpu.SetLineColor(1.0f, 0.5f, 0.25f, 0.8f);
    gpu.DrawLines(static_cast<std::int32_t>(points.size()), points.data(), perVertex, true);
    gpu.EndFrame();
    return FrameOf(gpu, width, height);
}

} // namespace

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
    gpu.SetLineWidth(6.0f);
    gpu.SetLineColor(1.0f, 1.0f, 1.0f, 0.5f);
    // There and back and across itself.
    const std::array points{SPoint{10, 10, 0, White}, SPoint{50, 20, 0, White}, SPoint{10, 30, 0, White},
        SPoint{30, 5, 0, White}, SPoint{31, 35, 0, White}};
    for (const bool smooth : {false, true}) {
        gpu.SetLineSmooth(smooth);
        Draw([&] { gpu.DrawLines(5, points.data(), false, true); });
        std::uint32_t brightest = 0;
        for (const auto pixel : FrameOf(gpu, Width, Height)) brightest = std::max(brightest, pixel & 0xFF);
        EXPECT_EQ(brightest, 0x7Fu);
    }
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

TEST_F(CpuLines, FillsAnAreaWithColumnsAsWithAnyOtherLines) {
    std::mt19937 random(9);
    const auto below = [&](int limit) {
        return static_cast<float>(random() % static_cast<std::uint32_t>(limit));
    };
    constexpr int kinds = 6;
    for (int round = 0; round < 120; ++round) {
        std::vector<std::array<float, 2>> ends;
        for (int n = 0; n < 100; ++n) {
            const auto place = static_cast<float>(n + round);
            switch (round % kinds) {
            case 0: // a slow curve
                ends.push_back({5.0f, 60.0f + 40.0f * std::sin(0.05f * place)});
                break;
            case 1: // a fast one, and not from one line
                ends.push_back({10.0f + below(4), 60.0f + 50.0f * std::sin(0.6f * place)});
                break;
            case 2: // leaps, beyond the frame too
                ends.push_back({below(40) - 20.0f, below(160)});
                break;
            case 3: // columns of no height among high ones
                ends.push_back({5.0f, below(4) == 0 ? 5.0f : 100.0f + below(8)});
                break;
            case 4: // at no whole pixels
                ends.push_back({5.3f, 90.7f + 0.1f * below(200)});
                break;
            default: // from below
                ends.push_back({110.0f, 70.0f - below(50)});
            }
        }
        std::vector<float> steps{1.0f};
        if (round % 5 == 3) steps = {1.0f, 1.0f, 2.0f, 1.5f};
        const float left = static_cast<float>(round % 40) + (round % 3 == 1 ? 0.5f : 0.0f);
        const auto columns = Columns(left, steps, ends);
        // With a way to the left before them they are no columns any more.
        std::vector<SPoint> others{{left - 2, -500, 0, White}, {left - 3, -500, 0, White}};
        others.insert(others.end(), columns.begin(), columns.end());
        const auto frame = FrameWith(columns, true, false, 1.0f);
        const auto expected = FrameWith(others, true, false, 1.0f);
        int painted = 0;
        for (std::int32_t y = 0; y < SceneHeight; ++y) {
            for (auto x = static_cast<std::int32_t>(left) + 3; x < SceneWidth; ++x) {
                const auto at = static_cast<std::size_t>(y * SceneWidth + x);
                ASSERT_EQ(frame[at], expected[at]) << "round " << round << ": " << x << ", " << y;
                painted += frame[at] != Black ? 1 : 0;
            }
        }
        ASSERT_GT(painted, 1000);
    }
}

TEST_F(CpuLines, PaintsNoPixelOfAFillTwiceWhenItComesBack) {
    std::vector<std::array<float, 2>> ends(100, {10.0f, 110.0f});
    auto points = Columns(20, {1.0f}, ends);
    points.push_back({5, 60, 0, White}); // across all of them
    points.push_back({120, 40, 0, White});
    for (auto& point : points) point.nColor = 0x80FFFFFF;
    for (const auto pixel : FrameWith(points, true, false, 1.0f))
        ASSERT_TRUE(pixel == Black || pixel == 0xFF808080) << pixel;
}

TEST_F(CpuLines, ContinuesWhereItsLinesEnterAndLeaveTheFrame) {
    std::mt19937 random(10);
    const auto below = [&](int limit) {
        return static_cast<float>(random() % static_cast<std::uint32_t>(limit));
    };
    constexpr std::int32_t margin = 200;
    for (int round = 0; round < 60; ++round) {
        std::vector<SPoint> points;
        for (int n = 0; n < 12; ++n)
            points.push_back({below(300) - 70.0f + 0.25f * below(4), below(260) - 70.0f, 0, White});
        const float lineWidth = 0.7f + below(12);
        const bool perVertex = round % 4 == 3;
        const bool smooth = round % 3 > 0;
        constexpr std::int32_t wide = SceneWidth + 2 * margin;
        constexpr std::int32_t high = SceneHeight + 2 * margin;
        const auto frame = FrameWith(points, perVertex, smooth, lineWidth);
        const auto large = FrameWith(points, perVertex, smooth, lineWidth, wide, high, margin, margin);
        Frame middle;
        for (std::int32_t y = 0; y < SceneHeight; ++y) {
            for (std::int32_t x = 0; x < SceneWidth; ++x)
                middle.push_back(large[static_cast<std::size_t>((y + margin) * wide + x + margin)]);
        }
        // What hard lines cover may turn on the last bit of a number.
        const auto difference = DifferenceOf(frame, middle);
        EXPECT_LE(smooth ? difference.most : 0, 1) << round;
        EXPECT_LE(difference.mean, 0.01) << round;
    }
}
