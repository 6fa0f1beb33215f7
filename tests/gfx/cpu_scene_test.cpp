#include "gfx/cpu/data.h"
#include "tests/gfx/scene_comparison.h"
#include "tests/support/golden_picture.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// The scenes, each by itself in a frame of its own.
class CpuScenes : public testing::TestWithParam<SScene> {
protected:
    CpuScenes() {
        EXPECT_TRUE(gpu.IsReady());
        DrawScene(gpu, GetParam());
    }

    GFX::CPU::DATA gpu{{nullptr, SceneWidth, SceneHeight}};
};

} // namespace

TEST_P(CpuScenes, LookAsThePlainRendererDrawsThem) {
    CPlainRenderer plain(SceneWidth, SceneHeight);
    DrawScene(plain, GetParam());
    const auto difference = DifferenceOf(FrameOf(gpu), FrameOf(plain));
    EXPECT_LE(difference.most, GetParam().closeness.most);
    EXPECT_LE(difference.mean, GetParam().closeness.mean);
}

TEST_P(CpuScenes, AreTheCommittedPictures) {
    const auto frame = FrameOf(gpu);
    auto picture = Pixels::TransparentBitmap(SceneWidth, SceneHeight);
    std::memcpy(picture.bytes.data(), frame.data(), picture.bytes.size());
    EXPECT_TRUE(IsTheCommittedPicture(picture, "scene_" + GetParam().name));
}

TEST_P(CpuScenes, KeepTheRulesOfEveryBackEnd) {
    EXPECT_TRUE(DrawsAsThePlainRenderer(gpu, GetParam()));
}

TEST_P(CpuScenes, BreakTheRulesOfEveryBackEndWhenTheyAreShifted) {
    SScene shifted = GetParam();
    shifted.draw = [this](GFX::GPU& target) {
        GetParam().draw(target);
        if (&target != &gpu) return; // the expectation stays
        const auto patch = MakeTexture(target, Backdrop(SceneWidth, SceneHeight));
        GFX::SDraw draw;
        draw.sTo = {2.0f, 2.0f, SceneWidth, SceneHeight};
        draw.sTransform.fMX = 30.0f;
        target.DrawTexture(patch, draw);
    };
    EXPECT_FALSE(DrawsAsThePlainRenderer(gpu, shifted));
}

INSTANTIATE_TEST_SUITE_P(
    All, CpuScenes, testing::ValuesIn(Scenes()), [](const auto& scene) { return scene.param.name; });
