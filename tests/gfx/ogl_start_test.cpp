// How the OpenGL renderer begins, and what becomes of one that can't.

#include "gfx/renderers.h"
#include "tests/gfx/ogl_functions.h"
#include "tests/gfx/ogl_window.h"
#include "tests/support/added_log.h"
#include "utils/text.h"

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

class OglStart : public testing::Test {
protected:
    CGlWindow window;
    CGlFunctions functions;
    Lines boxes; // title and text
    ShowError show = [this](std::u16string_view title, std::u16string_view text) {
        boxes.push_back(Utils::ToUtf8(title) + ": " + Utils::ToUtf8(text));
    };
    SRendererTarget target{window.Handle(), SceneWidth, SceneHeight, &show};

    SCreatedRenderer Make(std::uint32_t number) {
        return CreateRenderer(window.Handle(), SceneWidth, SceneHeight, number, show);
    }
};

const std::string OpenGLMessage =
    "Can not initialize OpenGL hardware renderer for KAV Sorrel Limiter v1.0.1.0! Please update your "
    "graphics "
    "hardware or switch GPU in multi-GPU environment.\r\n\r\nAttempt to create Direct2D renderer now...";

} // namespace

TEST_F(OglStart, ReportsVersionVendorRendererAndTheLargestTexture) {
    CGlFunctions::version = "4.5 Ours";
    CGlFunctions::vendor = "Us";
    CGlFunctions::renderer = "Quick Card";
    const CAddedLog log;
    const OGL::DATA gpu(target, EReason::Chosen);
    EXPECT_TRUE(gpu.IsReady());
    EXPECT_TRUE(gpu.IsCurrent());
    EXPECT_EQ(std::u16string(gpu.GetName()), u"OpenGL");
    EXPECT_GE(gpu.MaxTextureW(), 2048);
    EXPECT_EQ(gpu.MaxTextureH(), gpu.MaxTextureW());
    EXPECT_EQ(gpu.MinTextureW(), 0);
    EXPECT_EQ(gpu.MaxAspect(), 0);
    EXPECT_EQ(log.Text(),
        "OpenGL=4.5 Ours | Us | Quick Card | MaxTexture=" + std::to_string(gpu.MaxTextureW()) + "\r\n");
    EXPECT_EQ(boxes, Lines{});
}

TEST_F(OglStart, LeavesThePaceOfTheFramesToTheEditor) {
    const OGL::DATA gpu(target, EReason::Chosen);
    EXPECT_EQ(CGlFunctions::interval, 0);
}

TEST_F(OglStart, TexturesOfAnySizeComeWithVersionTwo) {
    const std::vector<std::pair<const char*, bool>> versions{{"1.1.0", false}, {"1.5 Ours", false},
        {"2.0", true}, {"2.1 Ours", true}, {"10.0", true}, {"4", true}, {"", true}, {"x.2", false}};
    for (const auto& [version, anySize] : versions) {
        CGlFunctions::version = version;
        EXPECT_EQ(OGL::DATA(target, EReason::Chosen).AnySizeTextures(), anySize) << version;
    }
}

TEST_F(OglStart, EveryStepThatFailsIsLoggedAndLeavesNothing) {
    CGlFunctions::error = 12345;
    for (const auto& step : CGlFunctions::Steps()) {
        CGlFunctions::failing = step;
        const CAddedLog log;
        OGL::DATA gpu(target, EReason::Chosen);
        EXPECT_FALSE(gpu.IsReady()) << step;
        EXPECT_FALSE(gpu.IsCurrent()) << step;
        EXPECT_EQ(log.Text(),
            "Error= OPENGL ERROR:\r\n\r\nVendor: \r\nRenderer: \r\nVersion: \r\nFunction: " + step +
                "(): error = 12345\r\n");
        EXPECT_FALSE(gpu.Shutdown()) << step;
        EXPECT_TRUE(CGlFunctions::IsLevel()) << step;
    }
    CGlFunctions::failing.clear();
    EXPECT_TRUE(OGL::DATA(target, EReason::Chosen).IsReady()) << "the window can still be drawn to";
    EXPECT_TRUE(CGlFunctions::IsLevel());
}

TEST_F(OglStart, EveryStepThatFailsLeadsToTheNextRenderer) {
    for (const auto& step : CGlFunctions::Steps()) {
        CGlFunctions::failing = step;
        boxes.clear();
        const CAddedLog log;
        const auto created = Make(OpenGL);
        EXPECT_NE(created.nRenderer, OpenGL) << step;
        EXPECT_TRUE(created.IsReady()) << step;
        ASSERT_GE(boxes.size(), 1u) << step;
        EXPECT_EQ(boxes.front(), "KAV Sorrel Limiter v1.0.1.0: " + OpenGLMessage);
        EXPECT_NE(log.Text().find("Error=" + OpenGLMessage + "\r\n"), std::string::npos) << step;
        EXPECT_TRUE(CGlFunctions::IsLevel()) << step;
    }
}

TEST_F(OglStart, WithoutAWindowItIsNotReady) {
    const CAddedLog log;
    EXPECT_FALSE(OGL::DATA({nullptr, 10, 10}, EReason::Chosen).IsReady());
    EXPECT_NE(log.Text().find("Error= OPENGL ERROR:"), std::string::npos);
    EXPECT_TRUE(CGlFunctions::IsLevel());
}

TEST_F(OglStart, OneThatIsNotReadyDoesNothing) {
    CGlFunctions::failing = CGlFunctions::Steps().front();
    OGL::DATA gpu(target, EReason::Chosen);
    const auto before = CGlFunctions::makesCurrent;
    gpu.BeginFrame();
    gpu.Clear();
    auto texture = MakeTexture(gpu, SpottedPicture(8, 8));
    EXPECT_EQ(texture.piGDIP, 0u);
    gpu.DrawTexture(texture, {});
    gpu.DrawTexture9(texture, {});
    const std::vector<SPoint> points(2);
    gpu.SetLineWidth(2.0f);
    gpu.SetLineSmooth(true);
    gpu.DrawLines(2, points.data(), false, true);
    gpu.SetClip(1, 1, 2, 2);
    gpu.UnbindTexture();
    gpu.Resize(20, 20);
    gpu.EndFrame();
    gpu.Present();
    gpu.FreeTexture(texture);
    EXPECT_FALSE(gpu.IsRenewalDue());
    EXPECT_EQ(FrameOf(gpu, 4, 4), Frame(16, 0xFF000000));
    EXPECT_EQ(CGlFunctions::makesCurrent, before);
}

TEST_F(OglStart, TheSystemsOwnSlowDriverIsReportedAndUsed) {
    CGlFunctions::renderer = "GDI Generic";
    CGlFunctions::version = "1.1.0";
    const auto created = Make(OpenGL);
    EXPECT_EQ(created.nRenderer, OpenGL);
    EXPECT_EQ(boxes,
        Lines{
            "KAV Sorrel Limiter v1.0.1.0: No hardware accelerated OpenGL implementation detected - KAV "
            "Sorrel "
            "Limiter graphical user interface performance may be unsatisfactory! Please update your graphics "
            "hardware or switch GPU in multi-GPU environment."});
    CGlFunctions::renderer = "GDI Generic 2";
    boxes.clear();
    OGL::DATA(target, EReason::Chosen);
    EXPECT_EQ(boxes, Lines{});
}

#if !defined(_WIN32)

TEST_F(OglStart, WithoutItsLibrariesItIsNotReady) {
    CGlFunctions::isMissing = true;
    const CAddedLog log;
    EXPECT_FALSE(OGL::DATA(target, EReason::Chosen).IsReady());
    EXPECT_NE(log.Text().find("Function: dlopen(): error = 0"), std::string::npos);
}

TEST_F(OglStart, ThatNobodyChoseLoadsNothingWithoutARenderNode) {
    CGlFunctions::hasRenderNode = false;
    const CAddedLog log;
    const auto created = Make(Direct3D9);
    EXPECT_EQ(created.nRenderer, Software);
    EXPECT_TRUE(created.IsReady());
    EXPECT_EQ(CGlFunctions::loads, 0);
    EXPECT_EQ(boxes, Lines{});
    EXPECT_NE(log.Text().find("Error=" + OpenGLMessage + "\r\n"), std::string::npos);
}

TEST_F(OglStart, ThatNobodyChoseIsPassedOverIfItsDriverDrawsInSoftware) {
    for (const char* const name :
        {"llvmpipe (LLVM 15.0.6, 256 bits)", "softpipe", "Mesa swrast", "Software Rasterizer"}) {
        CGlFunctions::renderer = name;
        const CAddedLog log;
        const auto created = Make(Direct3D9);
        EXPECT_EQ(created.nRenderer, Software) << name;
        EXPECT_EQ(boxes, Lines{}) << name;
        EXPECT_NE(log.Text().find(std::string(" | ") + name + " | MaxTexture="), std::string::npos);
        EXPECT_NE(log.Text().find("Error=" + OpenGLMessage + "\r\n"), std::string::npos);
        EXPECT_TRUE(CGlFunctions::IsLevel()) << name;
    }
}

TEST_F(OglStart, ThatNobodyChoseIsUsedWithADriverOfTheHardware) {
    CGlFunctions::renderer = "Quick Card";
    const auto created = Make(Direct3D9);
    EXPECT_EQ(created.nRenderer, OpenGL);
    EXPECT_TRUE(created.IsReady());
}

TEST_F(OglStart, ThatTheUserChoseIsUsedWithAnyDriver) {
    CGlFunctions::renderer = "llvmpipe";
    CGlFunctions::hasRenderNode = false;
    EXPECT_EQ(Make(OpenGL).nRenderer, OpenGL);
    EXPECT_EQ(boxes, Lines{});
}

TEST_F(OglStart, DrawsIntoTheWindowItselfIfItsVisualAllows) {
    {
        const OGL::DATA gpu(target, EReason::Chosen);
        EXPECT_EQ(window.drawn, window.Number());
        EXPECT_EQ(window.Host().Children(window.Number()).size(), 0u);
    }
    EXPECT_EQ(window.drawn, 0u);
}

TEST_F(OglStart, DrawsIntoAChildOfAnotherVisualOtherwise) {
    window.visual = 0x7FFF; // which no configuration has
    {
        OGL::DATA gpu(target, EReason::Chosen);
        ASSERT_TRUE(gpu.IsReady());
        const auto children = window.Host().Children(window.Number());
        ASSERT_EQ(children.size(), 1u);
        EXPECT_EQ(window.drawn, children.front());
        EXPECT_TRUE(window.Host().IsViewable(children.front()));
        const auto place = window.Host().Place(children.front());
        EXPECT_EQ(std::pair(place.width, place.height), std::pair(SceneWidth, SceneHeight));
        DrawScene(gpu, Scenes().front());
        const auto frame = FrameOf(gpu);
        gpu.Present();
        const auto shown = window.Shown(children.front());
        for (std::size_t n = 0; n < frame.size(); ++n)
            ASSERT_EQ(shown[n], frame[n]) << n % SceneWidth << ", " << n / SceneWidth;
        window.Resize(90, 70);
        gpu.Resize(90, 70);
        window.Sync();
        EXPECT_EQ(window.Host().Place(children.front()).width, 90);
        EXPECT_EQ(window.Host().Place(children.front()).height, 70);
    }
    EXPECT_EQ(window.Host().Children(window.Number()).size(), 0u);
    EXPECT_EQ(window.drawn, 0u);
}

#endif
