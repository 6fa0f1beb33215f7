// The double that tests of widgets draw on.

#include "tests/support/recording_gpu.h"

#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

class RecordingGpu : public testing::Test {
protected:
    CRecordingGpu gpu;
    STexture texture;

    void SetUp() override {
        gpu.CreateTexture({60, 40, 240, {}, {}}, texture, 64, 64);
        gpu.lines.clear();
    }
};

} // namespace

TEST_F(RecordingGpu, NotesADrawAsOneLineWithoutWhatIsAsUsual) {
    gpu.DrawTexture(texture, {{10, 20, 30.5f, 40}, {}, White, {}});
    gpu.DrawTexture(texture, {{10, 20, 30, 40}, {0, 0.5f, 0.25f, 1}, 0x80FF0000, {}});
    gpu.DrawTexture(texture, {{1, 2, 3, 4}, {}, White, {2, 2, 1, 0, 0, 45, 5, 0, -1}});
    EXPECT_EQ(gpu.lines, (Lines{"DrawTexture 1 to 10,20 30.5x40",
                             "DrawTexture 1 to 10,20 30x40 from 0..0.5,0.25..1 colour 80FF0000",
                             "DrawTexture 1 to 1,2 3x4 scale 2,2,1 turn 0,0,45 move 5,0,-1"}));
}

TEST_F(RecordingGpu, NotesANineSliceWithMarginsAndFrame) {
    gpu.DrawTexture9(texture, {{1, 2, 3, 4}, 5, 6, 7, 8, White, 0, {}});
    gpu.DrawTexture9(texture, {{1, 2, 3, 4}, 5, 6, 7, 8, 0xFF00FF00, 0.5f, {1, 1, 1, 90, 0, 0, 0, 0, 0}});
    EXPECT_EQ(
        gpu.lines, (Lines{"DrawTexture9 1 to 1,2 3x4 margins 5,6,7,8",
                       "DrawTexture9 1 to 1,2 3x4 margins 5,6,7,8 value 0.5 colour FF00FF00 turn 90,0,0"}));
}

TEST_F(RecordingGpu, NotesNothingOfADrawWithAlphaZero) {
    gpu.DrawTexture(texture, {{1, 2, 3, 4}, {}, 0x00FFFFFF, {}});
    gpu.DrawTexture9(texture, {{1, 2, 3, 4}, 5, 6, 7, 8, 0x00FFFFFF, 0, {}});
    EXPECT_EQ(gpu.lines, Lines{});
    gpu.DrawTexture(texture, {{1, 2, 3, 4}, {}, 0x01FFFFFF, {}});
    EXPECT_EQ(gpu.lines.size(), 1u);
}

TEST_F(RecordingGpu, NotesLinesPointByPoint) {
    const std::array<SPoint, 2> points{SPoint{1, 2, 0, 0xFF000001}, SPoint{3, 4, 5, 0x00000002}};
    gpu.DrawLines(2, points.data(), false, true);
    gpu.DrawLines(2, points.data(), true, false);
    gpu.DrawLines(0, nullptr, true, true);
    EXPECT_EQ(gpu.lines, (Lines{"DrawLines strip 1,2 | 3,4,5",
                             "DrawLines pairs 1,2 FF000001 | 3,4,5 00000002", "DrawLines strip"}));
}

TEST_F(RecordingGpu, NotesEveryOtherCall) {
    gpu.Clear();
    gpu.BeginFrame();
    gpu.EndFrame();
    gpu.Present();
    gpu.Resize(754, 553);
    gpu.SetLineWidth(1.5f);
    gpu.SetLineColor(1, 0.5f, 0.25f, 0);
    gpu.SetLineSmooth(true);
    gpu.BeginOffscreen();
    gpu.EndOffscreen();
    gpu.DrawOffscreen();
    gpu.UnbindTexture();
    gpu.SetClip(1, 2, 3, 4);
    gpu.SetClip(1, 2, 0, 4);
    gpu.SetClip(1, 2, 3, 0);
    gpu.SetCulling(false);
    gpu.ReleaseTexture(texture);
    EXPECT_TRUE(gpu.Shutdown());
    EXPECT_EQ(
        gpu.lines, (Lines{"Clear", "BeginFrame", "EndFrame", "Present", "Resize 754x553", "SetLineWidth 1.5",
                       "SetLineColor 1,0.5,0.25,0", "SetLineSmooth on", "BeginOffscreen", "EndOffscreen",
                       "DrawOffscreen", "UnbindTexture", "SetClip 1,2 3x4", "SetClip none", "SetClip none",
                       "SetCulling off", "ReleaseTexture 1", "Shutdown"}));
}

TEST_F(RecordingGpu, CountsTexturesThatAreNotGivenBack) {
    STexture second;
    gpu.CreateTextureBits(nullptr, 0, 0, second, 3, 4, 4, 4);
    EXPECT_EQ(gpu.LiveTextures(), (std::set<std::uint64_t>{1, 2}));
    gpu.FreeTexture(texture);
    EXPECT_EQ(texture, FreedTexture());
    EXPECT_EQ(gpu.LiveTextures(), std::set<std::uint64_t>{2});
    gpu.FreeTexture(texture);
    gpu.DrawTexture({77, 1, 1, 1, 1, 1, 1, 1, 1}, {});
    EXPECT_EQ(gpu.lines, (Lines{"CreateTextureBits 2 3x4 in 4x4", "FreeTexture 1", "FreeTexture ?",
                             "DrawTexture ? to 0,0 0x0"}));
}

TEST_F(RecordingGpu, CanFailToMakeTextures) {
    gpu.makesTextures = false;
    STexture second;
    gpu.CreateTexture({60, 40, 240, {}, {}}, second, 64, 64);
    EXPECT_EQ(second, FreedTexture());
    EXPECT_EQ(gpu.lines, Lines{"CreateTexture fails 60x40 in 64x64"});
    EXPECT_EQ(gpu.LiveTextures(), std::set<std::uint64_t>{1});
}

TEST_F(RecordingGpu, AnswersWhatTheTestSays) {
    EXPECT_TRUE(gpu.IsReady());
    EXPECT_TRUE(gpu.IsCurrent());
    EXPECT_TRUE(gpu.AnySizeTextures());
    EXPECT_FALSE(gpu.IsOffscreenCapable());
    EXPECT_EQ(gpu.MaxTextureW() + gpu.MaxTextureH() + gpu.MinTextureW() + gpu.MinTextureH(), 0);
    gpu.ready = gpu.current = gpu.anySize = false;
    gpu.offscreen = true;
    gpu.minWidth = 1;
    gpu.maxWidth = 2;
    gpu.minHeight = 3;
    gpu.maxHeight = 4;
    gpu.maxAspect = 5;
    EXPECT_FALSE(gpu.IsReady());
    EXPECT_FALSE(gpu.IsCurrent());
    EXPECT_FALSE(gpu.AnySizeTextures());
    EXPECT_TRUE(gpu.IsOffscreenCapable());
    EXPECT_EQ(gpu.MinTextureW(), 1);
    EXPECT_EQ(gpu.MaxTextureW(), 2);
    EXPECT_EQ(gpu.MinTextureH(), 3);
    EXPECT_EQ(gpu.MaxTextureH(), 4);
    EXPECT_EQ(gpu.MaxAspect(), 5);
    EXPECT_EQ(std::u16string(gpu.GetName()), u"Recording");
    EXPECT_EQ(gpu.lines, Lines{});
}

TEST_F(RecordingGpu, ThrowsInTheNamedCallOnly) {
    gpu.throwIn = "Present";
    gpu.EndFrame();
    try {
        gpu.Present();
        FAIL() << "nothing was thrown";
    } catch (const Exceptions::Std& error) {
        EXPECT_EQ(error.message, u" TEST ERROR:\r\n\r\nPresent");
    }
    EXPECT_EQ(gpu.lines, (Lines{"EndFrame", "Present"}));
    gpu.throwIn = "IsReady";
    EXPECT_THROW(gpu.IsReady(), Exceptions::Std);
    gpu.throwIn = "CreateTexture";
    STexture second;
    EXPECT_THROW(gpu.CreateTexture({}, second, 2, 2), Exceptions::Std);
    EXPECT_EQ(second, FreedTexture());
}
