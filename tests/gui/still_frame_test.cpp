// What a frame costs in which nothing changes: counted, in a program of its own.

#include "gui/button.h"
#include "gui/knob.h"
#include "gui/meter.h"
#include "gui/value_display.h"
#include "tests/gui/recording_root.h"
#include "tests/support/counted_allocations.h"

#include <gtest/gtest.h>
#include <memory>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

/// Draws nothing, and counts.
struct SCountingGpu final : GFX::GPU {
    void BeginFrame() override { ++frames; }
    void DrawTexture(const GFX::STexture&, const GFX::SDraw&) override { ++draws; }
    void DrawTexture9(const GFX::STexture&, const GFX::SDraw9&) override { ++draws; }
    void CreateTexture(const Pixels::SBitmap&, GFX::STexture& texture, std::int32_t, std::int32_t) override {
        texture.piGDIP = 1;
    }
    void CreateTextureBits(const void*, std::int32_t, std::int32_t, GFX::STexture& texture, std::int32_t,
        std::int32_t, std::int32_t, std::int32_t) override {
        texture.piGDIP = 1;
    }
    bool AnySizeTextures() const override { return true; }
    bool IsReady() const override { return true; }

    static inline std::size_t frames = 0;
    static inline std::size_t draws = 0;
};

struct SWindow final : IWindow {
    bool Exists() const noexcept override { return true; }
};

struct SPictures final : IPictures {
    std::unique_ptr<Pixels::SBitmap> LoadImage(
        const std::u16string&, std::int32_t, std::int32_t, std::int32_t) override {
        return std::make_unique<Pixels::SBitmap>(Pixels::TransparentBitmap(64, 64));
    }
};

std::unique_ptr<GFX::GPU> Make(const GFX::SRendererTarget&, GFX::EReason) {
    return std::make_unique<SCountingGpu>();
}
constexpr GFX::RendererTable Table{{{u"Software", Make, true}, {u"OpenGL", Make, true},
    {u"Direct3D9", Make, true}, {u"Direct2D", Make, true}}};

SWidgetInfo Info(std::int32_t id, float x) {
    SWidgetInfo info;
    info.nId = id;
    info.sName = u"any control of the panel";
    info.sText = u"a text that is longer than a small string";
    info.sImage = u"Any((4)).png";
    info.sList = id == 3 ? u"one||two" : u"";
    info.fX = x;
    info.fW = info.fH = 64;
    info.fValueRiseMs = info.fValueFallMs = 10000.0f;
    return info;
}

class StillFrame : public testing::Test {
protected:
    SWindow window;
    SPictures pictures;
    CRecordingRoot root{{&window, &pictures}};
    std::uint32_t time = 1000;

    StillFrame() { GFX::UseRenderers(&Table); }
    ~StillFrame() override { GFX::UseRenderers(nullptr); }
    /// Allocations of some ticks.
    std::size_t Ticks(bool redraws) {
        const std::size_t before = Allocations();
        for (int n = 0; n < 100; ++n) {
            if (redraws) root.Invalidate();
            root.Frame().Tick(time += 16);
        }
        return Allocations() - before;
    }
};

} // namespace

TEST_F(StillFrame, AllocatesNothingWhenNoTextAndNoSizeChanges) {
    ASSERT_TRUE(root.Screen().Create());
    root.Show(true);
    CKnob knob(root, Info(1, 0));
    CButton button(root, Info(2, 100));
    CValueDisplay display(root, Info(3, 200));
    CMeter meter(root, Info(-4, 300));
    Ticks(true);
    EXPECT_EQ(Ticks(true), 0u) << "whole redraws";
    meter.SetFromHost(0.75f);
    SCountingGpu::draws = 0;
    EXPECT_EQ(Ticks(false), 0u) << "a value that moves";
    EXPECT_GT(SCountingGpu::draws, 0u);
}

TEST_F(StillFrame, DrawsNothingWhenNothingIsToBeDone) {
    ASSERT_TRUE(root.Screen().Create());
    root.Show(true);
    CKnob knob(root, Info(1, 0));
    Ticks(true);
    root.Frame().Tick(time += 16);
    SCountingGpu::frames = 0;
    SCountingGpu::draws = 0;
    EXPECT_EQ(Ticks(false), 0u);
    EXPECT_EQ(SCountingGpu::frames, 0u);
    EXPECT_EQ(SCountingGpu::draws, 0u);
}
