// What Direct3D and Direct2D draw, read back through themselves.

#include "gfx/renderers.h"
#include "tests/gfx/direct_window.h"
#include "tests/gfx/scene_comparison.h"

#include <limits>
#include <memory>

using namespace KAV;
using namespace KAV::Tests;

namespace {

// Where they differ more, the differences are pictures in tests/pictures/direct.
//
// Hardware that repeats only pictures of certain sizes gets others piece by piece, with hard borders between
// the pieces. The panel repeats none.
constexpr double PieceByPiece = 0.014;
// Lines with the colours of their points: at their ends, which are a corner here and two lines there.
constexpr double CornersOfColouredLines = 0.008;
// The Direct2D that these tests run on smooths no lines.
constexpr double RoughLines = 0.06;
constexpr double RoughColouredLines = 0.014;

const std::vector<SSceneAllowance> Direct3DAllowances{
    {"stretched_tiles", PieceByPiece}, {"coloured_lines", CornersOfColouredLines}};
const std::vector<SSceneAllowance> Direct2DAllowances{
    {"stretched_tiles", PieceByPiece}, {"smooth_lines", RoughLines}, {"coloured_lines", RoughColouredLines}};

class DirectScenes : public testing::TestWithParam<std::tuple<int, SScene>> {
protected:
    const SScene& Scene() const { return std::get<1>(GetParam()); }
    bool IsDirect3D() const { return std::get<0>(GetParam()) == 0; }

    CDirectWindow window{SceneWidth, SceneHeight};
    std::unique_ptr<GFX::GPU> gpu = (IsDirect3D() ? GFX::Direct3DRenderer() : GFX::Direct2DRenderer())
                                        .pCreate(window.Target(), GFX::EReason::Chosen);
};

} // namespace

TEST_P(DirectScenes, LookAsThePlainRendererDrawsThem) {
    ASSERT_TRUE(gpu->IsReady());
    EXPECT_TRUE(
        DrawsAsThePlainRenderer(*gpu, Scene(), IsDirect3D() ? Direct3DAllowances : Direct2DAllowances));
}

namespace {

class DirectNumbers : public testing::TestWithParam<std::uint32_t> {};

} // namespace

TEST_P(DirectNumbers, ThatMakeNoSenseDrawNothing) {
    const CDirectWindow window(SceneWidth, SceneHeight);
    const auto gpu = GFX::Renderers()[GetParam()].pCreate(window.Target(), GFX::EReason::Chosen);
    const float none = std::numeric_limits<float>::quiet_NaN();
    const float endless = std::numeric_limits<float>::infinity();
    gpu->BeginFrame();
    gpu->Clear();
    const auto texture = MakeTexture(*gpu, SpottedPicture(20, 10));
    for (const float number : {none, endless, -endless, 1e30f}) {
        for (std::size_t n = 0; n < 8; ++n) {
            GFX::SDraw draw;
            draw.sTo = {30, 40, 20, 10};
            const std::array<float*, 8> all{&draw.sTo.fL, &draw.sTo.fW, &draw.sFrom.fU1, &draw.sFrom.fU2,
                &draw.sTransform.fSX, &draw.sTransform.fRZ, &draw.sTransform.fMX, &draw.sTo.fH};
            *all[n] = number;
            gpu->DrawTexture(texture, draw);
            GFX::SDraw9 slices;
            slices.sTo = draw.sTo;
            slices.sTransform = draw.sTransform;
            if (n != 2 && n != 3) gpu->DrawTexture9(texture, slices);
        }
    }
    for (const auto& size : {GFX::SRect{30, 40, 0, 10}, GFX::SRect{30, 40, 20, -10}}) {
        GFX::SDraw draw;
        draw.sTo = size;
        gpu->DrawTexture(texture, draw);
    }
    const std::array<GFX::SPoint, 3> points{
        {{none, 5, 0, GFX::White}, {endless, 5, 0, GFX::White}, {20, none, 0, GFX::White}}};
    gpu->DrawLines(3, points.data(), false, true);
    gpu->DrawLines(3, points.data(), true, true);
    gpu->DrawLines(0, nullptr, true, true);
    gpu->EndFrame();
    EXPECT_EQ(FrameOf(*gpu), Frame(SceneWidth * SceneHeight, 0xFF000000));
    EXPECT_TRUE(DrawsAsThePlainRenderer(*gpu, Scenes()[0]));
}

INSTANTIATE_TEST_SUITE_P(All, DirectNumbers, testing::Values(GFX::Direct3D9, GFX::Direct2D));

INSTANTIATE_TEST_SUITE_P(All, DirectScenes,
    testing::Combine(testing::Values(0, 1), testing::ValuesIn(Scenes())), [](const auto& one) {
        return (std::get<0>(one.param) == 0 ? "Direct3D_" : "Direct2D_") + std::get<1>(one.param).name;
    });
