#include "tests/gfx/cpu_scenes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace KAV::GFX;

namespace KAV::Tests {

namespace {

constexpr SCloseness Equal{0, 0.0};
constexpr SCloseness Tinted{1, 0.5};
constexpr SCloseness Scaled{6, 0.5};
constexpr SCloseness Lines{3, 0.2};
constexpr SCloseness MixedLines{8, 0.2}; // the colours of places by which a line comes twice

SDraw At(float left, float top, float width, float height) {
    SDraw draw;
    draw.sTo = {left, top, width, height};
    return draw;
}

/// The parts of pictures are those of the picture, which may not take all of its texture.
void Draw(GPU& gpu, const STexture& texture, SDraw draw) {
    draw.sFrom.fU1 *= texture.fU;
    draw.sFrom.fU2 *= texture.fU;
    draw.sFrom.fV1 *= texture.fV;
    draw.sFrom.fV2 *= texture.fV;
    gpu.DrawTexture(texture, draw);
}

SDraw Turned(float left, float top, float width, float height, float degrees) {
    SDraw draw = At(left, top, width, height);
    draw.sTransform.fRZ = degrees;
    return draw;
}

void DrawAtOwnSize(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(31, 23));
    Draw(gpu, spotted, At(5, 7, 31, 23));
    Draw(gpu, spotted, At(-10, -5, 31, 23));
    Draw(gpu, spotted, At(150, 110, 31, 23));
    Draw(gpu, spotted, At(20, 20, 31, 23));
    auto moved = At(60, 60, 31, 23);
    moved.sTransform.fMX = 7.0f;
    moved.sTransform.fMY = -9.0f;
    Draw(gpu, spotted, moved);
}

void DrawCells(GPU& gpu) {
    const auto sheet = MakeTexture(gpu, SpottedPicture(17, 13, 3, 4), 3, 4);
    for (std::int32_t row = 0; row < 4; ++row) {
        for (std::int32_t column = 0; column < 3; ++column) {
            auto draw = At(static_cast<float>(3 + 20 * column), static_cast<float>(2 + 16 * row), 17, 13);
            draw.sFrom = CellOf(sheet, column, row);
            Draw(gpu, sheet, draw);
        }
    }
}

void DrawParts(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(40, 40));
    auto draw = At(10, 10, 20, 10);
    draw.sFrom = {0.25f, 0.75f, 0.5f, 0.75f};
    Draw(gpu, spotted, draw);
    draw = At(60, 30, 10, 40);
    draw.sFrom = {0.0f, 0.25f, 0.0f, 1.0f};
    Draw(gpu, spotted, draw);
}

void DrawTiles(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(19, 14));
    auto draw = At(4, 6, 100, 80);
    draw.sFrom = {0.0f, 100.0f / 19.0f, 0.0f, 80.0f / 14.0f};
    Draw(gpu, spotted, draw);
}

void DrawStretchedTiles(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(19, 14));
    auto draw = At(4.5f, 6.25f, 120, 90);
    draw.sFrom = {-0.5f, 2.5f, -1.25f, 2.0f};
    Draw(gpu, spotted, draw);
}

void DrawQuarterTurns(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(32, 21));
    Draw(gpu, spotted, Turned(5, 20, 32, 21, 90));
    Draw(gpu, spotted, Turned(45, 20, 32, 21, 180));
    Draw(gpu, spotted, Turned(85, 20, 32, 21, 270));
    Draw(gpu, spotted, Turned(5, 70, 32, 21, -90));
    auto mirrored = At(60, 80, 32, 21);
    mirrored.sTransform.fSX = -1.0f;
    Draw(gpu, spotted, mirrored);
    mirrored = At(110, 80, 32, 21);
    mirrored.sTransform.fRX = 180.0f;
    Draw(gpu, spotted, mirrored);
}

void DrawTints(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(31, 23));
    const std::array<std::uint32_t, 8> colours{
        0x80FFFFFF, 0x01FFFFFF, 0xFFFF0000, 0xFF00FF80, 0x8040C0F0, 0xFE123456, 0xFFFFFFFE, 0x40000000};
    for (std::size_t n = 0; n < colours.size(); ++n) {
        auto draw = At(static_cast<float>(4 + 38 * (n % 4)), static_cast<float>(5 + 40 * (n / 4)), 31, 23);
        draw.nColor = colours[n];
        Draw(gpu, spotted, draw);
    }
    auto nothing = At(60, 90, 31, 23);
    nothing.nColor = 0x00FFFFFF;
    Draw(gpu, spotted, nothing);
}

void DrawScaled(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(40, 30));
    Draw(gpu, spotted, At(2, 3, 57, 41));
    Draw(gpu, spotted, At(70, 4, 21, 16));
    Draw(gpu, spotted, At(100, 4, 9, 30));
    const auto sheet = MakeTexture(gpu, SpottedPicture(20, 20, 3, 2), 3, 2);
    auto draw = At(70, 50, 33, 27);
    draw.sFrom = CellOf(sheet, 1, 1);
    Draw(gpu, sheet, draw);
    draw = At(110, 50, 12, 11);
    draw.sFrom = CellOf(sheet, 2, 0);
    Draw(gpu, sheet, draw);
}

void DrawBetweenPixels(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(31, 23));
    Draw(gpu, spotted, At(5.5f, 7.25f, 31, 23));
    Draw(gpu, spotted, At(50.25f, 7, 31, 23));
    Draw(gpu, spotted, At(90, 7.5f, 31.5f, 23.25f));
    Draw(gpu, spotted, At(10.4f, 60.4f, 0.5f, 30.0f));
    const auto sheet = MakeTexture(gpu, SpottedPicture(20, 20, 3, 2), 3, 2);
    auto draw = At(50.5f, 60.5f, 20, 20);
    draw.sFrom = CellOf(sheet, 1, 0);
    Draw(gpu, sheet, draw);
}

void DrawTurned(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(40, 30));
    Draw(gpu, spotted, Turned(12, 15, 40, 30, 30));
    Draw(gpu, spotted, Turned(80, 10, 60, 20, -30));
    const auto sheet = MakeTexture(gpu, SpottedPicture(24, 24, 2, 2), 2, 2);
    auto draw = Turned(20, 75, 24, 24, 45);
    draw.sFrom = CellOf(sheet, 1, 0);
    Draw(gpu, sheet, draw);
    draw = Turned(80, 65, 40, 40, 110);
    draw.sFrom = CellOf(sheet, 0, 1);
    draw.nColor = 0xC0FFC080;
    Draw(gpu, sheet, draw);
}

void DrawTransformed(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(40, 30));
    auto draw = At(15, 10, 40, 30);
    draw.sTransform = {1.5f, 0.75f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
    Draw(gpu, spotted, draw);
    draw = At(90, 10, 40, 30);
    draw.sTransform.fRY = 60.0f;
    Draw(gpu, spotted, draw);
    draw = At(20, 70, 40, 30);
    draw.sTransform = {1.2f, 0.9f, 1.0f, 40.0f, 20.0f, 30.0f, 3.0f, -2.0f, 5.0f};
    Draw(gpu, spotted, draw);
    draw = At(90, 70, 40, 30);
    draw.sTransform.fRX = 90.0f; // nothing of it is left
    Draw(gpu, spotted, draw);
}

SDraw9 Slices(float left, float top, float width, float height) {
    SDraw9 draw;
    draw.sTo = {left, top, width, height};
    draw.nMrgL = 5;
    draw.nMrgT = 4;
    draw.nMrgR = 7;
    draw.nMrgB = 6;
    return draw;
}

void DrawNineSlices(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(21, 19));
    gpu.DrawTexture9(spotted, Slices(3, 3, 67, 41));
    gpu.DrawTexture9(spotted, Slices(80, 3, 21, 19));
    auto tinted = Slices(110, 3, 33, 57);
    tinted.nColor = 0xA0FFE0C0;
    tinted.fValue = 1.0f;
    gpu.DrawTexture9(spotted, tinted);
    gpu.DrawTexture9(spotted, Slices(80, 30, 8, 31)); // margins that exceed the quad
    gpu.DrawTexture9(spotted, Slices(3.5f, 50.5f, 40, 30));
    auto turned = Slices(55, 70, 50, 30);
    turned.sTransform.fRZ = 30.0f;
    gpu.DrawTexture9(spotted, turned);
}

void DrawClipped(GPU& gpu) {
    const auto spotted = MakeTexture(gpu, SpottedPicture(60, 50));
    gpu.SetClip(20, 15, 30, 20);
    Draw(gpu, spotted, At(5, 5, 60, 50));
    gpu.SetClip(80.5f, 10.4f, 20.0f, 20.2f);
    Draw(gpu, spotted, At(70, 5, 60, 50));
    gpu.SetClip(-50, 80, 90, 500);
    Draw(gpu, spotted, At(10, 65, 60, 50));
    gpu.SetClip(0, 0, 0, 10);
    Draw(gpu, spotted, At(90, 65, 60, 50));
}

std::vector<SPoint> Points(const std::vector<std::array<float, 2>>& places) {
    std::vector<SPoint> points;
    for (const auto& place : places) points.push_back({place[0], place[1], 0.0f, White});
    return points;
}

void DrawStrip(GPU& gpu, const std::vector<SPoint>& points, bool perVertex = false) {
    gpu.DrawLines(static_cast<std::int32_t>(points.size()), points.data(), perVertex, true);
}

void DrawHardLines(GPU& gpu) {
    gpu.SetLineSmooth(false);
    gpu.SetLineWidth(1.0f);
    gpu.SetLineColor(1.0f, 0.5f, 0.0f, 1.0f);
    DrawStrip(gpu, Points({{5, 5}, {5, 40}, {50, 40}, {50, 5}}));
    DrawStrip(gpu, Points({{60.5f, 5.5f}, {60.5f, 40.5f}, {100.5f, 30.5f}}));
    gpu.SetLineWidth(5.0f);
    gpu.SetLineColor(0.0f, 1.0f, 0.5f, 0.5f);
    DrawStrip(gpu, Points({{10, 60}, {60, 80}, {20, 100}}));
    const auto pairs = Points({{80, 60}, {120, 60}, {120.3f, 70}, {80, 110}, {3, 3}});
    gpu.DrawLines(5, pairs.data(), false, false);
    gpu.SetLineWidth(0.2f);
    DrawStrip(gpu, Points({{130, 10}, {150, 110}}));
}

void DrawSmoothLines(GPU& gpu) {
    gpu.SetLineSmooth(true);
    gpu.SetLineWidth(1.0f);
    gpu.SetLineColor(1.0f, 1.0f, 1.0f, 1.0f);
    DrawStrip(gpu, Points({{5, 5.5f}, {50, 5.5f}}));
    DrawStrip(gpu, Points({{5, 10}, {50, 10}}));
    DrawStrip(gpu, Points({{5, 15}, {50, 30}}));
    gpu.SetLineWidth(6.0f);
    gpu.SetLineColor(0.2f, 0.8f, 1.0f, 0.6f);
    DrawStrip(gpu, Points({{10, 50}, {60, 40}, {90, 80}, {130, 75}}));
    gpu.SetLineWidth(3.0f);
    DrawStrip(gpu, Points({{100, 10}, {140, 20}, {105, 30}, {150, 32}})); // pointed joints
    gpu.SetLineWidth(0.7f);
    std::vector<SPoint> wave;
    for (int x = 0; x <= 150; ++x) {
        const auto at = static_cast<float>(x);
        wave.push_back({at + 4.0f, 100.0f + 12.0f * std::sin(at * 0.2f), 0.0f, White});
    }
    DrawStrip(gpu, wave);
}

void DrawColouredLines(GPU& gpu) {
    gpu.SetLineSmooth(true);
    gpu.SetLineWidth(5.0f);
    gpu.SetLineColor(0.0f, 0.0f, 0.0f, 1.0f);
    auto points = Points({{10, 10}, {80, 15}, {150, 30}});
    points[0].nColor = 0xFFFF0000;
    points[1].nColor = 0x8000FF00;
    points[2].nColor = 0x000000FF;
    DrawStrip(gpu, points, true);
    gpu.SetLineSmooth(false);
    gpu.SetLineWidth(1.0f);
    // A filled curve: lines from its upper side to its lower side and on to the next column, as one strip.
    std::vector<SPoint> fill;
    for (int x = 0; x < 140; ++x) {
        const auto at = static_cast<float>(x + 10);
        const SPoint upper{at, 50.0f, 0.0f, 0x00FF3A68};
        const SPoint lower{at, 80.0f + 25.0f * std::sin(static_cast<float>(x) * 0.04f), 0.0f, 0xC0FF3968};
        fill.push_back(x % 2 == 0 ? lower : upper);
        fill.push_back(x % 2 == 0 ? upper : lower);
    }
    DrawStrip(gpu, fill, true);
}

} // namespace

Pixels::SBitmap SpottedPicture(
    std::int32_t cellWidth, std::int32_t cellHeight, std::int32_t columns, std::int32_t rows) {
    auto bitmap = Pixels::TransparentBitmap(cellWidth * columns, cellHeight * rows);
    bitmap.alpha = Pixels::EAlpha::Straight;
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        for (std::int32_t x = 0; x < bitmap.width; ++x) {
            const std::int32_t cell = x / cellWidth + columns * (y / cellHeight);
            const double u = (x % cellWidth + 0.5) / cellWidth - 0.5;
            const double v = (y % cellHeight + 0.5) / cellHeight - 0.5;
            const double ring = std::sin(14.0 * std::hypot(u, v) + cell);
            auto* pixel = &bitmap.bytes[static_cast<std::size_t>(y * bitmap.stride + 4 * x)];
            pixel[0] = static_cast<std::uint8_t>(127.5 + 127.0 * ring);
            pixel[1] = static_cast<std::uint8_t>(127.5 + 127.0 * std::sin(9.0 * u + 2.0 * cell));
            pixel[2] = static_cast<std::uint8_t>(40 * (cell + 3) % 256);
            pixel[3] = static_cast<std::uint8_t>(std::clamp(420.0 - 620.0 * std::hypot(u, v), 0.0, 255.0));
        }
    }
    return bitmap;
}

Pixels::SBitmap Backdrop(std::int32_t width, std::int32_t height) {
    auto bitmap = Pixels::TransparentBitmap(width, height);
    bitmap.alpha = Pixels::EAlpha::None;
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            auto* pixel = &bitmap.bytes[static_cast<std::size_t>(y * bitmap.stride + 4 * x)];
            pixel[0] = static_cast<std::uint8_t>(40 + x * 150 / width);
            pixel[1] = static_cast<std::uint8_t>(30 + y * 100 / height);
            pixel[2] = static_cast<std::uint8_t>(90 - x * 60 / width);
        }
    }
    return bitmap;
}

STexture MakeTexture(GPU& gpu, const Pixels::SBitmap& bitmap, std::int32_t columns, std::int32_t rows) {
    STexture texture;
    texture.nW = bitmap.width;
    texture.nH = bitmap.height;
    const bool anySize = gpu.AnySizeTextures() || gpu.MaxTextureW() == 0; // 0: a double, which takes any
    const auto width = TextureSide(bitmap.width, anySize);
    const auto height = TextureSide(bitmap.height, anySize);
    texture.fU = static_cast<float>(bitmap.width) / static_cast<float>(width);
    texture.fV = static_cast<float>(bitmap.height) / static_cast<float>(height);
    gpu.CreateTexture(bitmap, texture, width, height);
    texture.nColumns = columns;
    texture.nRows = rows;
    texture.nFrames = columns * rows;
    return texture;
}

STexturePart CellOf(const STexture& texture, std::int32_t column, std::int32_t row) {
    const auto columns = static_cast<float>(texture.nColumns);
    const auto rows = static_cast<float>(texture.nRows);
    return {static_cast<float>(column) / columns, static_cast<float>(column + 1) / columns,
        static_cast<float>(row) / rows, static_cast<float>(row + 1) / rows};
}

const std::vector<SScene>& Scenes() {
    static const std::vector<SScene> scenes{{"own_size", Equal, DrawAtOwnSize, true},
        {"cells", Equal, DrawCells, true}, {"parts", Equal, DrawParts, true},
        {"tiles", Equal, DrawTiles, true}, {"stretched_tiles", Scaled, DrawStretchedTiles},
        {"quarter_turns", Equal, DrawQuarterTurns, true}, {"tints", Tinted, DrawTints, true},
        {"scaled", Scaled, DrawScaled}, {"between_pixels", Scaled, DrawBetweenPixels},
        {"turned", Scaled, DrawTurned}, {"transformed", Scaled, DrawTransformed},
        {"nine_slices", Scaled, DrawNineSlices}, {"clipped", Equal, DrawClipped, true},
        {"hard_lines", Equal, DrawHardLines}, {"smooth_lines", Lines, DrawSmoothLines},
        {"coloured_lines", MixedLines, DrawColouredLines}};
    return scenes;
}

void DrawScene(GPU& gpu, const SScene& scene) {
    gpu.BeginFrame();
    gpu.Clear();
    auto backdrop = MakeTexture(gpu, Backdrop(SceneWidth, SceneHeight));
    Draw(gpu, backdrop, At(0, 0, SceneWidth, SceneHeight));
    scene.draw(gpu);
    gpu.SetClip(0, 0, 0, 0);
    gpu.EndFrame();
}

Frame FrameOf(GPU& gpu, std::int32_t width, std::int32_t height) {
    Frame frame(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    gpu.ReadBack(frame.data(), width, height);
    return frame;
}

SCloseness DifferenceOf(const Frame& one, const Frame& other) {
    SCloseness closeness;
    double sum = 0.0;
    for (std::size_t n = 0; n < one.size(); ++n) {
        for (int shift = 0; shift < 32; shift += 8) {
            const int difference = std::abs(
                static_cast<int>(one[n] >> shift & 0xFF) - static_cast<int>(other[n] >> shift & 0xFF));
            closeness.most = std::max(closeness.most, difference);
            sum += difference;
        }
    }
    closeness.mean = sum / (4.0 * static_cast<double>(one.size()));
    return closeness;
}

} // namespace KAV::Tests
