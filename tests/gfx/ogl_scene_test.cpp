// What OpenGL draws, read back and compared with the plain renderer.

#include "tests/gfx/ogl_functions.h"
#include "tests/gfx/ogl_window.h"
#include "tests/gfx/scene_comparison.h"

#if !defined(_WIN32)
#include "tests/support/golden_picture.h"

#include <cstdlib>
#endif

using namespace KAV;
using namespace KAV::Tests;

namespace {

class OglScenes : public testing::TestWithParam<SScene> {
protected:
    CGlWindow window;
    GFX::OGL::DATA gpu{{window.Handle(), SceneWidth, SceneHeight}, GFX::EReason::Chosen};
};

/// Lines of OpenGL have no mitres, and those that aren't smooth have their own rule for the pixels at their
/// edges. The pictures of these differences are tests/pictures/opengl/SCENE.png.
const std::vector<SSceneAllowance> Lines{
    {"hard_lines", 0.02}, {"smooth_lines", 0.032}, {"coloured_lines", 0.009}};

} // namespace

TEST_P(OglScenes, LookAsThePlainRendererDrawsThem) {
    ASSERT_TRUE(gpu.IsReady());
    EXPECT_TRUE(DrawsAsThePlainRenderer(gpu, GetParam(), Lines));
#if !defined(_WIN32)
    // For people: another driver draws these lines in its own way.
    const bool isListed = std::any_of(Lines.begin(), Lines.end(),
        [](const SSceneAllowance& allowance) { return allowance.scene == GetParam().name; });
    if (!isListed || std::getenv("KAV_RENEW_PICTURES") == nullptr) return;
    CPlainRenderer plain(SceneWidth, SceneHeight);
    DrawScene(plain, GetParam());
    const auto picture = DifferencePicture(FrameOf(gpu), FrameOf(plain), SceneWidth, SceneHeight);
    EXPECT_TRUE(IsTheCommittedPicture(picture, "opengl/" + GetParam().name));
#endif
}

INSTANTIATE_TEST_SUITE_P(
    All, OglScenes, testing::ValuesIn(Scenes()), [](const auto& scene) { return scene.param.name; });

namespace {

/// A driver that wants powers of two, so that pictures take only a part of their textures.
class OglPaddedScenes : public testing::TestWithParam<SScene> {
protected:
    CGlWindow window;
    CGlFunctions functions;
};

} // namespace

TEST_P(OglPaddedScenes, LookTheSame) {
    CGlFunctions::version = "1.4";
    GFX::OGL::DATA gpu{{window.Handle(), SceneWidth, SceneHeight}, GFX::EReason::Chosen};
    ASSERT_FALSE(gpu.AnySizeTextures());
    EXPECT_TRUE(DrawsAsThePlainRenderer(gpu, GetParam(), Lines));
}

INSTANTIATE_TEST_SUITE_P(
    All, OglPaddedScenes, testing::ValuesIn(Scenes()), [](const auto& scene) { return scene.param.name; });
