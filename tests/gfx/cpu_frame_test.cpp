#include "gfx/cpu/data.h"
#include "tests/gfx/counting_target.h"
#include "tests/gfx/cpu_fixture.h"
#include "tests/support/counted_allocations.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

/// Which parts of a frame are painted and put into the window.
class CpuFrames : public testing::Test {
protected:
    static constexpr std::int32_t Side = 400;

    CpuFrames() {
        backdrop = MakeTexture(gpu, Backdrop(Side, Side));
        spotted = MakeTexture(gpu, SpottedPicture(20, 20));
    }
    /// A backdrop, and one picture there.
    void DrawAt(float left, float top, std::uint32_t colour = White) {
        gpu.BeginFrame();
        gpu.Clear();
        gpu.DrawTexture(backdrop, At(0, 0, Side, Side));
        gpu.DrawTexture(spotted, At(left, top, 20, 20, colour));
        gpu.EndFrame();
        gpu.Present();
    }
    bool IsShown() { return target.shown == FrameOf(gpu, Side, Side); }

    CCountingTarget target;
    CPU::DATA gpu{{static_cast<Platform::IPictureTarget*>(&target), Side, Side}};
    STexture backdrop;
    STexture spotted;
};

constexpr std::int32_t Levels = 12;

/// A sheet of meters, cell by cell in one row: the lowest segments of each are lit, one more from cell to
/// cell. The first column of each is never lit.
Pixels::SBitmap LevelSheet(std::int32_t cellWidth, std::int32_t segment = 1) {
    auto bitmap = Pixels::TransparentBitmap(cellWidth * Levels, segment * Levels);
    bitmap.alpha = Pixels::EAlpha::Premultiplied;
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        for (std::int32_t x = 0; x < bitmap.width; ++x) {
            const bool isLit = x % cellWidth > 0 && Levels - 1 - y / segment < x / cellWidth;
            const std::uint32_t pixel = isLit ? 0xC000C000 : 0x80202020;
            std::memcpy(&bitmap.bytes[static_cast<std::size_t>(y * bitmap.stride + 4 * x)], &pixel, 4);
        }
    }
    return bitmap;
}

/// Random draws of all kinds, most of them as in the frame before.
class CRandomFrames final {
public:
    explicit CRandomFrames(std::uint32_t seed) : _random(seed) {
        for (int n = 0; n < 20; ++n) _draws.push_back(NewDraw());
    }
    void Change() {
        const int changes = Below(4);
        for (int n = 0; n < changes; ++n) {
            const auto place = _draws.begin() + Below(static_cast<int>(_draws.size()));
            switch (Below(5)) {
            case 4:
                for (auto& draw : _draws) Step(draw);
                break;
            case 0:
                if (_draws.size() > 5) _draws.erase(place);
                break;
            case 1:
                _draws.insert(place, NewDraw());
                break;
            case 2:
                std::iter_swap(place, _draws.begin() + Below(static_cast<int>(_draws.size())));
                break;
            default:
                *place = NewDraw();
            }
        }
    }
    void Draw(GPU& gpu, const std::array<STexture, 4>& textures) const {
        gpu.BeginFrame();
        gpu.Clear();
        for (const auto& draw : _draws) {
            gpu.SetClip(draw.clip.fL, draw.clip.fT, draw.clip.fW, draw.clip.fH);
            const auto& texture = textures[draw.texture];
            gpu.SetLineSmooth(draw.quad.nColor % 2 == 0);
            gpu.SetLineWidth(draw.quad.sTo.fW / 20.0f);
            gpu.SetLineColor(0.5f, 0.7f, 1.0f, 0.6f);
            if (draw.kind < 5 || draw.kind > 8) gpu.DrawTexture(texture, draw.quad);
            if (draw.kind == 5) gpu.DrawTexture9(texture, draw.slices);
            if (draw.kind >= 6 && draw.kind <= 8)
                gpu.DrawLines(static_cast<std::int32_t>(draw.points.size()), draw.points.data(),
                    draw.kind == 7, draw.kind != 8);
        }
        gpu.SetClip(0, 0, 0, 0);
        gpu.EndFrame();
    }

    static constexpr std::int32_t MeterWidth = 7;

private:
    struct SRandomDraw {
        int kind = 0;
        std::size_t texture = 0;
        SRect clip;
        SDraw quad;
        SDraw9 slices;
        std::vector<SPoint> points;
    };
    int Below(int limit) { return static_cast<int>(_random() % static_cast<std::uint32_t>(limit)); }
    float From(int first, int last) { return static_cast<float>(first + Below(last - first + 1)); }

    SRandomDraw NewDraw() {
        SRandomDraw draw;
        draw.kind = Below(13);
        draw.texture = static_cast<std::size_t>(Below(3));
        if (Below(4) == 0) draw.clip = {From(0, 80), From(0, 60), From(10, 80), From(10, 80)};
        draw.quad.sTo = {From(-10, 140), From(-10, 100), From(1, 60), From(1, 60)};
        if (Below(3) == 0) draw.quad.sTo.fL += 0.37f;
        if (draw.kind == 0) draw.quad.sTo = {0, 0, SceneWidth, SceneHeight}; // hides what is below
        if (draw.kind == 1) draw.quad.sTransform.fRZ = From(0, 360);
        if (draw.kind == 2) draw.quad.sFrom = {0.5f, 3.5f, -1.0f, 1.25f};
        if (Below(2) == 0) draw.quad.nColor = static_cast<std::uint32_t>(_random());
        draw.slices = {draw.quad.sTo, 3, 2, 4, 5, draw.quad.nColor, 0.0f, draw.quad.sTransform};
        for (int n = Below(8) + 2; n > 0; --n)
            draw.points.push_back({From(-20, 180), From(-20, 140), 0, static_cast<std::uint32_t>(_random())});
        if (draw.kind > 8) {
            draw.texture = 3;
            draw.quad.sTo.fW = MeterWidth;
            draw.quad.sTo.fH = Levels;
            Step(draw);
        }
        return draw;
    }
    /// What moves by itself: meters to another cell, or another part of one, and quads to another extent.
    void Step(SRandomDraw& draw) {
        constexpr auto cell = 1.0f / static_cast<float>(Levels);
        const auto frame = static_cast<float>(Below(Levels));
        if (draw.kind > 10) draw.quad.sFrom = {frame * cell, (frame + 1) * cell, 0.0f, 1.0f};
        if (draw.kind == 9 || draw.kind == 10) { // the same pixels, as high as the level
            draw.quad.sTo.fH = frame + 1;
            draw.quad.sFrom = {2 * cell, 3 * cell, 0.0f, (frame + 1) * cell};
        }
    }

    std::mt19937 _random;
    std::vector<SRandomDraw> _draws;
};

} // namespace

TEST_F(CpuFrames, ThatAreAsBeforeAreNeitherPaintedNorPut) {
    DrawAt(10, 10);
    EXPECT_EQ(target.puts, 1);
    EXPECT_GT(gpu.PaintedDraws(), 0u);
    for (int n = 0; n < 10; ++n) {
        DrawAt(10, 10);
        EXPECT_EQ(gpu.PaintedDraws(), 0u);
    }
    EXPECT_EQ(target.puts, 1);
}

TEST_F(CpuFrames, ArePaintedAndPutWhereTheyChange) {
    DrawAt(10, 10);
    EXPECT_EQ(target.PutPixels(), Side * Side);
    DrawAt(300, 350);
    EXPECT_EQ(target.puts, 2);
    EXPECT_EQ(target.PutPixels(), 2 * 20 * 20); // where it was, and where it is
    EXPECT_EQ(gpu.PaintedDraws(), 3u);          // the backdrop in both, the picture in one
    EXPECT_TRUE(IsShown());
    DrawAt(300, 350, 0xFF80FFFF);
    EXPECT_EQ(target.PutPixels(), 20 * 20);
    EXPECT_TRUE(IsShown());
}

TEST_F(CpuFrames, ArePaintedBetweenTheLevelsOfAMeter) {
    constexpr std::int32_t width = 9;
    const auto meter = MakeTexture(gpu, LevelSheet(width), Levels);
    const auto show = [&](std::int32_t level) {
        auto draw = At(50, 60, width, Levels);
        draw.sFrom = CellOf(meter, level, 0);
        gpu.BeginFrame();
        gpu.Clear();
        gpu.DrawTexture(backdrop, At(0, 0, Side, Side));
        gpu.DrawTexture(meter, draw);
        gpu.EndFrame();
        gpu.Present();
        EXPECT_TRUE(IsShown());
        return target.areas;
    };
    show(2);
    for (int n = 0; n < 2; ++n) { // found, and as kept
        EXPECT_EQ(show(7), (std::vector<Platform::SArea>{{51, 60 + Levels - 7, width - 1, 5}}));
        EXPECT_EQ(gpu.PaintedDraws(), 2u);
        EXPECT_EQ(show(2), (std::vector<Platform::SArea>{{51, 60 + Levels - 7, width - 1, 5}}));
        EXPECT_EQ(show(1), (std::vector<Platform::SArea>{{51, 60 + Levels - 2, width - 1, 1}}));
        show(2);
    }
}

TEST_F(CpuFrames, ArePaintedBetweenTheLevelsOfEachOfManyMeters) {
    constexpr std::int32_t width = 9;
    constexpr std::int32_t segment = 20;
    constexpr std::int32_t meters = 16; // side by side
    const auto meter = MakeTexture(gpu, LevelSheet(width, segment), Levels);
    std::int64_t changed = 0;
    std::int64_t put = 0;
    for (std::int32_t frame = 0; frame < 2 * Levels; ++frame) {
        gpu.BeginFrame();
        gpu.Clear();
        gpu.DrawTexture(backdrop, At(0, 0, Side, Side));
        for (std::int32_t n = 0; n < meters; ++n) {
            auto draw = At(static_cast<float>(10 + width * n), 50, width, segment * Levels);
            const std::int32_t level = (5 * n + frame) % Levels;
            draw.sFrom = CellOf(meter, level, 0);
            gpu.DrawTexture(meter, draw);
            if (frame > 0) changed += (width - 1) * segment * (level > 0 ? 1 : Levels - 1);
        }
        gpu.EndFrame();
        gpu.Present();
        EXPECT_TRUE(IsShown());
        if (frame > 0) put += target.PutPixels();
    }
    EXPECT_GE(put, changed);
    EXPECT_LE(put, 2 * changed); // near areas may go together
}

TEST_F(CpuFrames, AreDueAgainWhenTheWindowIsBusy) {
    DrawAt(10, 10);
    target.isBusy = true;
    DrawAt(100, 100);
    DrawAt(200, 200);
    EXPECT_EQ(target.puts, 3);
    EXPECT_FALSE(IsShown());
    target.isBusy = false;
    DrawAt(200, 200); // as before, but not yet in the window
    EXPECT_EQ(target.puts, 4);
    EXPECT_EQ(gpu.PaintedDraws(), 0u);
    EXPECT_TRUE(IsShown());
    DrawAt(200, 200);
    EXPECT_EQ(target.puts, 4);
}

TEST_F(CpuFrames, ArePutWholeAfterANewSize) {
    DrawAt(10, 10);
    gpu.Resize(Side, Side);
    DrawAt(10, 10);
    EXPECT_EQ(target.PutPixels(), Side * Side);
    EXPECT_TRUE(IsShown());
    gpu.Resize(100, 50);
    DrawAt(10, 10);
    EXPECT_EQ(target.PutPixels(), 100 * 50);
    EXPECT_EQ(target.shown, FrameOf(gpu, 100, 50));
}

TEST_F(CpuFrames, AreNotPutUnlessPresented) {
    gpu.BeginFrame();
    gpu.Clear();
    gpu.DrawTexture(backdrop, At(0, 0, Side, Side));
    gpu.EndFrame();
    EXPECT_EQ(target.puts, 0);
    gpu.Present();
    EXPECT_EQ(target.puts, 1);
    gpu.Shutdown();
    gpu.Present();
    EXPECT_EQ(target.puts, 1);
}

TEST_F(CpuFrames, GoOnWhenADrawIsLeftOutOrAdded) {
    for (const bool extra : {false, true, false}) {
        gpu.BeginFrame();
        gpu.Clear();
        gpu.DrawTexture(backdrop, At(0, 0, Side, Side));
        if (extra) gpu.DrawTexture(spotted, At(200, 100, 20, 20));
        for (int n = 0; n < 10; ++n) gpu.DrawTexture(spotted, At(static_cast<float>(30 * n), 300, 20, 20));
        gpu.EndFrame();
        gpu.Present();
        EXPECT_TRUE(IsShown());
    }
    EXPECT_EQ(target.PutPixels(), 20 * 20);
}

TEST_F(CpuFrames, AreWholeAgainAfterOneThatLayOverAnother) {
    DrawAt(10, 10);
    const auto before = FrameOf(gpu, Side, Side);
    gpu.BeginFrame();
    gpu.DrawTexture(spotted, At(100, 100, 20, 20));
    gpu.EndFrame();
    EXPECT_NE(FrameOf(gpu, Side, Side), before);
    DrawAt(10, 10);
    EXPECT_EQ(FrameOf(gpu, Side, Side), before);
    EXPECT_TRUE(IsShown());
}

TEST_F(CpuFrames, AreWhatPaintingAllOfThemGives) {
    const auto make = [](GPU& of) {
        return std::array{MakeTexture(of, Backdrop(70, 50)), MakeTexture(of, SpottedPicture(20, 15)),
            MakeTexture(of, SpottedPicture(9, 12)),
            MakeTexture(of, LevelSheet(CRandomFrames::MeterWidth), Levels)};
    };
    CCountingTarget window;
    CPU::DATA changed({static_cast<Platform::IPictureTarget*>(&window), SceneWidth, SceneHeight});
    CPU::DATA whole({nullptr, SceneWidth, SceneHeight});
    const auto changedTextures = make(changed);
    const auto wholeTextures = make(whole);
    std::size_t painted = 0;
    std::size_t paintedWhole = 0;
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        CRandomFrames frames(seed);
        for (int n = 0; n < 40; ++n) {
            frames.Change();
            changed.SetStretching(n % 10 > 6);
            whole.SetStretching(n % 10 > 6);
            frames.Draw(changed, changedTextures);
            whole.Resize(SceneWidth, SceneHeight); // so that nothing of it is known
            frames.Draw(whole, wholeTextures);
            painted += changed.PaintedDraws();
            paintedWhole += whole.PaintedDraws();
            ASSERT_EQ(FrameOf(changed), FrameOf(whole)) << "seed " << seed << ", frame " << n;
            window.isBusy = n % 3 == 0;
            changed.Present();
            ASSERT_TRUE(window.isBusy || window.shown == FrameOf(changed))
                << "seed " << seed << ", frame " << n;
        }
    }
    EXPECT_LT(painted, paintedWhole);
}

TEST_F(CpuFrames, AllocateNothingInTheEnd) {
    const auto draw = [&](int n) {
        std::array<SPoint, 100> points;
        for (std::size_t i = 0; i < points.size(); ++i)
            points[i] = {static_cast<float>(i),
                static_cast<float>((i * 7 + static_cast<std::size_t>(n)) % 50), 0, 0xFF00FF00};
        gpu.BeginFrame();
        gpu.Clear();
        gpu.DrawTexture(backdrop, At(0, 0, Side, Side));
        for (int i = 0; i < 8; ++i)
            gpu.DrawTexture(spotted, At(static_cast<float>(40 * i + n % 3), 200, 20, 20, 0xFF00FF00));
        auto turned = At(100, 100, 20, 20);
        turned.sTransform.fRZ = static_cast<float>(n);
        gpu.DrawTexture(spotted, turned);
        gpu.SetLineSmooth(true);
        gpu.DrawLines(100, points.data(), false, true);
        gpu.DrawLines(100, points.data(), true, true);
        gpu.EndFrame();
        gpu.Present();
    };
    target.areas.reserve(100);
    for (int n = 0; n < 30; ++n) draw(n);
    const auto before = Allocations();
    for (int n = 30; n < 60; ++n) draw(n);
    EXPECT_EQ(Allocations(), before);
}
