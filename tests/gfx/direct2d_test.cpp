// Direct2D on functions that count and fail.

#include "gfx/d2d/data.h"
#include "gfx/pixel_format.h"
#include "gfx/renderers.h"
#include "tests/gfx/direct_window.h"
#include "tests/gfx/scene_comparison.h"
#include "tests/gfx/watched_calls.h"
#include "tests/support/added_log.h"
#include "tests/support/hand_clock.h"
#include "utils/text.h"

#include <memory>
#include <utility>

using namespace KAV;
using namespace KAV::Tests;

namespace {

const std::string OutOfMemory = "-2147024882"; // E_OUTOFMEMORY

class Direct2D : public testing::Test {
protected:
    CWatchedDirect2D watched;
    CDirectWindow window{SceneWidth, SceneHeight};

    std::unique_ptr<GFX::D2D::DATA> Make() { return std::make_unique<GFX::D2D::DATA>(window.Target()); }
};

struct SFailure {
    std::string call;
    int at = 1;
    std::string text;
    bool works = true;
};

const std::vector<SFailure> Beginning{
    {"CreateFactory", 1, "D2D1CreateFactory(D2D1_FACTORY_TYPE_SINGLE_THREADED, &_piFactory)", false},
    {"CreateHwndRenderTarget", 1, "_piFactory->CreateHwndRenderTarget(sProperties, sWindow, &_piTarget)",
        false},
    {"QueryInterface", 1, "_piTarget->QueryInterface(&_piContext)", false},
    {"CreateStrokeStyle", 1, "_piFactory->CreateStrokeStyle(sStyle, nullptr, 0, &_piCorners)"},
    {"CreateSolidColorBrush", 1, "_piContext->CreateSolidColorBrush(sWhite, &_piBrush)"}};

} // namespace

TEST_F(Direct2D, IsReadyAndSaysItsLimits) {
    const CAddedLog log;
    const auto gpu = Make();
    EXPECT_TRUE(gpu->IsReady());
    EXPECT_EQ(std::u16string(gpu->GetName()), u"Direct2D");
    EXPECT_TRUE(gpu->AnySizeTextures());
    EXPECT_TRUE(gpu->IsCurrent());
    EXPECT_TRUE(gpu->IsOffscreenCapable());
    EXPECT_FALSE(gpu->IsRenewalDue());
    EXPECT_EQ(gpu->MaxTextureW(), gpu->MaxTextureH());
    EXPECT_GT(gpu->MaxTextureW(), 1000);
    const auto limit = std::to_string(gpu->MaxTextureW());
    EXPECT_EQ(log.Text(), "Direct2D=MaxTextureW=" + limit + " | MaxTextureH=" + limit + "\r\n");
}

TEST_F(Direct2D, MakesTheWindowsTargetInPixels) {
    static D2D1_RENDER_TARGET_PROPERTIES properties;
    static D2D1_HWND_RENDER_TARGET_PROPERTIES windows;
    auto table = *Platform::Direct2D();
    static const auto create = table.CreateHwndRenderTarget;
    table.CreateHwndRenderTarget = [](ID2D1Factory* factory, const D2D1_RENDER_TARGET_PROPERTIES* one,
                                       const D2D1_HWND_RENDER_TARGET_PROPERTIES* other,
                                       ID2D1HwndRenderTarget** target) {
        properties = *one;
        windows = *other;
        return create(factory, one, other, target);
    };
    Platform::UseDirect2D(&table);
    Make();
    EXPECT_EQ(properties.type, D2D1_RENDER_TARGET_TYPE_DEFAULT);
    EXPECT_EQ(properties.pixelFormat.format, 87);
    EXPECT_EQ(properties.pixelFormat.alphaMode, 3);
    EXPECT_EQ(properties.dpiX, 96.0f);
    EXPECT_EQ(properties.dpiY, 96.0f);
    EXPECT_EQ(windows.hwnd, window.Handle());
    EXPECT_EQ(windows.pixelSize.width, static_cast<UINT32>(SceneWidth));
    EXPECT_EQ(windows.pixelSize.height, static_cast<UINT32>(SceneHeight));
    Platform::UseDirect2D(nullptr);
}

TEST_F(Direct2D, LogsEachCallOfItsBeginningThatFailsAndIsReadyIfItCanDraw) {
    for (const auto& failure : Beginning) {
        watched->Fail(failure.call, failure.at);
        const CAddedLog log;
        {
            const auto gpu = Make();
            EXPECT_EQ(gpu->IsReady(), failure.works) << failure.text;
            for (const auto& scene : Scenes()) DrawScene(*gpu, scene); // without what is missing
        }
        EXPECT_EQ(
            ErrorsOf(log.Text()), std::vector<std::string>{"Error=" + failure.text + ":" + OutOfMemory});
        EXPECT_EQ(watched->made, watched->freed) << failure.text;
    }
}

TEST_F(Direct2D, MakesNoOtherCallsInItsBeginning) {
    std::map<std::string, int> listed{{"CreateEffect", 1}, {"GetMaximumBitmapSize", 1}};
    for (const auto& failure : Beginning) ++listed[failure.call];
    Make()->Shutdown();
    auto counts = watched->counts;
    counts.erase("Release");
    EXPECT_EQ(counts, listed);
}

TEST_F(Direct2D, ThatFailsIsFollowedBySoftware) {
    for (const auto& failure : Beginning) {
        if (failure.works) continue;
        watched->Fail(failure.call, failure.at);
        std::vector<std::string> boxes;
        const auto created = GFX::CreateRenderer(window.Handle(), SceneWidth, SceneHeight, GFX::Direct2D,
            [&](std::u16string_view, std::u16string_view text) { boxes.push_back(Utils::ToUtf8(text)); });
        EXPECT_TRUE(created.IsReady());
        EXPECT_EQ(created.nRenderer, GFX::Software);
        EXPECT_EQ(boxes,
            std::vector<std::string>{
                "Can not initialize Direct2D hardware renderer for KAV Sorrel Limiter v1.0.1.0! Please "
                "update "
                "your graphics hardware or switch GPU in multi-GPU environment.\r\n\r\nAttempt to create "
                "Software renderer now..."});
    }
}

// In the middle of a session

TEST_F(Direct2D, LosesWhatAFailedCallWouldHaveDrawnAndNoMore) {
    const auto gpu = Make();
    ASSERT_TRUE(gpu->IsReady());
    CHandClock clock;
    const std::string bitmap = "_piContext->CreateBitmap(sSize, a_pBits, a_nPitch, sProperties, &piBitmap)";
    const std::vector<std::pair<std::string, std::vector<SFailure>>> all{
        {"tints", {{"CreateBitmap", 1, bitmap}, {"CreateBitmap", 2, bitmap}, {"CreateBitmap", 4, bitmap},
                      {"EndDraw", 1, "_piContext->EndDraw()"}}},
        {"hard_lines", {{"CreatePathGeometry", 1, "_piFactory->CreatePathGeometry(&piPath)"},
                           {"OpenPath", 1, "piPath->Open(&piSink)"}, {"ClosePath", 1, "piSink->Close()"}}},
        {"coloured_lines", {{"CreateBitmap", 2, bitmap}, {"CreateBitmap", 3, bitmap}}}};
    for (const auto& [name, failures] : all) {
        const auto& scene = SceneOf(name);
        DrawScene(*gpu, scene);
        const auto expected = FrameOf(*gpu);
        for (const auto& failure : failures) {
            clock.Advance(2000); // the same line is logged once a second
            const CAddedLog log;
            watched->Fail(failure.call, failure.at);
            watched->failsAfterwards = failure.call == "EndDraw"; // there is no draw after it in any case
            DrawScene(*gpu, scene);
            watched->failsAfterwards = false;
            EXPECT_EQ(
                ErrorsOf(log.Text()), std::vector<std::string>{"Error=" + failure.text + ":" + OutOfMemory})
                << failure.call;
            EXPECT_TRUE(gpu->IsReady());
            DrawScene(*gpu, scene);
            EXPECT_EQ(FrameOf(*gpu), expected) << failure.call << failure.at;
        }
    }
}

TEST_F(Direct2D, ReadsBackByAnyWayThatTheSystemHas) {
    const auto gpu = Make();
    DrawScene(*gpu, Scenes()[0]);
    const auto expected = FrameOf(*gpu);
    watched->Fail("CopyFromRenderTarget");
    EXPECT_EQ(FrameOf(*gpu), expected);
    const Frame black(SceneWidth * SceneHeight, 0xFF000000);
    EXPECT_NE(expected, black);
    const auto fails = [&](const std::string& call, const std::string& text) {
        const CAddedLog log;
        watched->FailAlways(call);
        EXPECT_EQ(FrameOf(*gpu), black) << call;
        EXPECT_EQ(log.Text(), "Error=" + text + ":" + OutOfMemory + "\r\n");
        watched->FailNothing();
    };
    fails("Map", "piCopy->Map(D2D1_MAP_OPTIONS_READ, &sMapped)");
    fails("CreateBitmap", "_piContext->CreateBitmap(sSize, nullptr, 0, sProperties, &piCopy)");
    EXPECT_EQ(FrameOf(*gpu), expected);
    const auto before = watched->made - watched->freed;
    FrameOf(*gpu);
    EXPECT_EQ(watched->made - watched->freed, before);
}

TEST_F(Direct2D, KeepsItsSizeIfAnotherCannotBeHad) {
    const auto gpu = Make();
    const CAddedLog log;
    watched->Fail("ResizeTarget");
    gpu->Resize(70, 50);
    EXPECT_EQ(log.Text(), "Error=_piTarget->Resize(sSize):" + OutOfMemory + "\r\n");
    EXPECT_TRUE(DrawsAsThePlainRenderer(*gpu, SceneOf("own_size")));
    watched->counts.clear();
    gpu->Resize(0, 50);
    gpu->Resize(70, 0);
    EXPECT_EQ(watched->counts["ResizeTarget"], 0);
    gpu->Resize(70, 50);
    EXPECT_TRUE(gpu->IsReady());
    gpu->Resize(SceneWidth, SceneHeight);
    EXPECT_TRUE(DrawsAsThePlainRenderer(*gpu, SceneOf("own_size")));
}

TEST_F(Direct2D, GoesOnAfterAFrameThatWasDropped) {
    const auto gpu = Make();
    gpu->BeginFrame();
    gpu->SetClip(10, 10, 5, 5);
    EXPECT_TRUE(DrawsAsThePlainRenderer(*gpu, SceneOf("clipped")));
    gpu->BeginFrame();
    gpu->BeginOffscreen();
    EXPECT_TRUE(DrawsAsThePlainRenderer(*gpu, SceneOf("clipped")));
}

TEST_F(Direct2D, DoesNotActOnTheLossOfItsTarget) {
    const auto gpu = Make();
    watched->result = static_cast<HRESULT>(0x8899000CL); // it is to be made anew
    watched->failsAfterwards = true;
    watched->FailAlways("EndDraw");
    const CAddedLog log;
    for (int n = 0; n < 3; ++n) DrawScene(*gpu, Scenes()[0]);
    EXPECT_TRUE(gpu->IsReady());
    EXPECT_FALSE(gpu->IsRenewalDue());
    EXPECT_EQ(log.Text().find("Error=_piContext->EndDraw():-2003238900\r\n"), 0u) << log.Text();
}

// Tints

namespace {

/// An effect that the system lacks, and what is asked of it.
struct SEffect {
    static inline int objects = 0; // stands for both objects
    static inline D2D1_MATRIX_5X4_F matrix;
    static inline ID2D1Image* input;
    static inline std::vector<D2D1_RECT_F> parts;
    static inline std::vector<D2D1_MATRIX_3X2_F> transforms;

    static void* Object() { return &objects; }
};

} // namespace

TEST_F(Direct2D, TintsByTheSystemsEffectWhereThereIsOne) {
    auto table = *Platform::Direct2D();
    static const auto release = table.Release;
    static const auto transform = table.SetTransform;
    table.CreateEffect = [](ID2D1DeviceContext*, const GUID* id, ID2D1Effect** effect) -> HRESULT {
        EXPECT_EQ(id->Data1, 0x921f03d6u);
        *effect = static_cast<ID2D1Effect*>(SEffect::Object());
        return S_OK;
    };
    table.Release = [](IUnknown* object) -> ULONG {
        return object == SEffect::Object() ? 0 : release(object);
    };
    table.SetInput = [](ID2D1Effect*, ID2D1Image* image) { SEffect::input = image; };
    table.SetColorMatrix = [](ID2D1Effect*, const D2D1_MATRIX_5X4_F* matrix) -> HRESULT {
        SEffect::matrix = *matrix;
        return S_OK;
    };
    table.GetOutput = [](ID2D1Effect*, ID2D1Image** image) {
        *image = static_cast<ID2D1Image*>(SEffect::Object());
    };
    table.SetTransform = [](ID2D1DeviceContext* context, const D2D1_MATRIX_3X2_F* matrix) {
        SEffect::transforms.push_back(*matrix);
        transform(context, matrix);
    };
    table.DrawImage = [](ID2D1DeviceContext*, ID2D1Image* image, const D2D1_RECT_F* part) {
        EXPECT_EQ(image, SEffect::Object());
        SEffect::parts.push_back(*part);
        SEffect::transforms.push_back(SEffect::transforms.back()); // the one of this draw, twice
    };
    Platform::UseDirect2D(&table);
    {
        const auto gpu = Make();
        gpu->BeginFrame();
        const auto texture = MakeTexture(*gpu, SpottedPicture(20, 10, 2, 2), 2, 2);
        GFX::SDraw draw;
        draw.sTo = {30, 40, 60, 20};
        draw.sFrom = CellOf(texture, 1, 1);
        draw.nColor = 0xFF336699;
        SEffect::parts.clear();
        SEffect::transforms.clear();
        gpu->DrawTexture(texture, draw);
        ASSERT_EQ(SEffect::parts.size(), 1u);
        EXPECT_NE(SEffect::input, nullptr);
        const auto& m = SEffect::matrix;
        EXPECT_FLOAT_EQ(m._11, 0.2f);
        EXPECT_FLOAT_EQ(m._22, 0.4f);
        EXPECT_FLOAT_EQ(m._33, 0.6f);
        EXPECT_FLOAT_EQ(m._44, 1.0f);
        EXPECT_EQ(m._12 + m._13 + m._14 + m._21 + m._23 + m._24 + m._31 + m._32 + m._34 + m._41 + m._42 +
                      m._43 + m._51 + m._52 + m._53 + m._54,
            0.0f);
        const auto& part = SEffect::parts[0];
        EXPECT_FLOAT_EQ(part.left, 20.0f);
        EXPECT_FLOAT_EQ(part.top, 10.0f);
        EXPECT_FLOAT_EQ(part.right, 40.0f);
        EXPECT_FLOAT_EQ(part.bottom, 20.0f);
        // Before the draw its matrix, and that of the quad again: the part begins at 0, 0 there.
        ASSERT_EQ(SEffect::transforms.size(), 5u);
        const auto& t = SEffect::transforms[1];
        EXPECT_FLOAT_EQ(t._11, 3.0f);
        EXPECT_FLOAT_EQ(t._22, 2.0f);
        EXPECT_FLOAT_EQ(t._12, 0.0f);
        EXPECT_FLOAT_EQ(t._21, 0.0f);
        EXPECT_FLOAT_EQ(t._31, 30.0f);
        EXPECT_FLOAT_EQ(t._32, 40.0f);
        EXPECT_FLOAT_EQ(SEffect::transforms.back()._11, 1.0f);
        EXPECT_FLOAT_EQ(SEffect::transforms.back()._31, 0.0f);
        draw.nColor = 0x80FFFFFF; // opacity alone needs no effect
        gpu->DrawTexture(texture, draw);
        draw.nColor = 0x00336699;
        gpu->DrawTexture(texture, draw);
        EXPECT_EQ(SEffect::parts.size(), 1u);
        draw.nColor = 0xFF336699;
        draw.sTransform.fMX = 7.0f;
        gpu->DrawTexture(texture, draw);
        EXPECT_FLOAT_EQ(SEffect::transforms[SEffect::transforms.size() - 3]._31, 37.0f);
        gpu->EndFrame();
    }
    Platform::UseDirect2D(nullptr);
}

TEST_F(Direct2D, TintsWithFourBitmapsOfATextureWhereThereIsNoEffect) {
    const auto gpu = Make();
    gpu->BeginFrame();
    const auto texture = MakeTexture(*gpu, SpottedPicture(20, 10));
    GFX::SDraw draw;
    draw.sTo = {30, 40, 20, 10};
    watched->counts.clear();
    draw.nColor = 0x80FFFFFF;
    gpu->DrawTexture(texture, draw);
    EXPECT_EQ(watched->counts["CreateBitmap"], 0);
    EXPECT_EQ(watched->counts["DrawBitmap"], 1);
    draw.nColor = 0xFF336699;
    gpu->DrawTexture(texture, draw);
    gpu->DrawTexture(texture, draw);
    EXPECT_EQ(watched->counts["CreateBitmap"], 4);
    EXPECT_EQ(watched->counts["DrawBitmap"], 9);
    gpu->EndFrame();
}

// Layers and backdrops

TEST_F(Direct2D, DrawsALayerThatIsLaidOverTheFrame) {
    const auto gpu = Make();
    DrawScene(*gpu, SceneOf("own_size"));
    const auto without = FrameOf(*gpu);
    const std::uint32_t green = 0xFF00FF00;
    GFX::SDraw draw;
    draw.sTo = {20, 30, 40, 10};
    for (int n = 0; n < 2; ++n) {
        gpu->BeginFrame();
        gpu->Clear();
        GFX::STexture pixel;
        pixel.nW = pixel.nH = 1;
        gpu->CreateTextureBits(&green, 4, GFX::Argb32, pixel, 1, 1, 1, 1);
        gpu->BeginOffscreen();
        gpu->DrawTexture(pixel, draw);
        gpu->EndOffscreen();
        gpu->DrawOffscreen();
        gpu->EndFrame();
        const auto frame = FrameOf(*gpu);
        EXPECT_EQ(frame[29 * SceneWidth + 25], 0xFF000000);
        EXPECT_EQ(frame[30 * SceneWidth + 25], green);
        EXPECT_EQ(frame[39 * SceneWidth + 59], green);
        EXPECT_EQ(frame[40 * SceneWidth + 25], 0xFF000000);
    }
    DrawScene(*gpu, SceneOf("own_size"));
    EXPECT_EQ(FrameOf(*gpu), without);
}

TEST_F(Direct2D, MakesALayerOnceForEachSize) {
    const auto gpu = Make();
    const auto layer = [&] {
        watched->counts.clear();
        gpu->BeginFrame();
        gpu->BeginOffscreen();
        gpu->EndOffscreen();
        gpu->EndFrame();
        return watched->counts["CreateBitmap"];
    };
    EXPECT_EQ(layer(), 1);
    EXPECT_EQ(layer(), 0);
    gpu->Resize(70, 50);
    EXPECT_EQ(layer(), 1);
    EXPECT_EQ(layer(), 0);
    gpu->Shutdown();
}

TEST_F(Direct2D, MakesABackdropOncePerFrame) {
    const auto gpu = Make();
    DrawScene(*gpu, SceneOf("own_size"));
    GFX::STexture backdrop;
    gpu->MakeBackdrop(backdrop, SceneWidth, SceneHeight);
    EXPECT_EQ(backdrop.nW, SceneWidth);
    const auto first = backdrop.piGDIP;
    EXPECT_NE(first, 0u);
    watched->counts.clear();
    gpu->MakeBackdrop(backdrop, SceneWidth, SceneHeight);
    EXPECT_EQ(backdrop.piGDIP, first);
    EXPECT_EQ(watched->counts["Map"], 0) << "the same frame";
    DrawScene(*gpu, SceneOf("tints"));
    gpu->MakeBackdrop(backdrop, SceneWidth, SceneHeight);
    EXPECT_EQ(watched->counts["Map"], 1);
    gpu->ReleaseTexture(backdrop);
    EXPECT_EQ(backdrop, GFX::FreedTexture());
    gpu->MakeBackdrop(backdrop, SceneWidth, SceneHeight);
    EXPECT_EQ(watched->counts["Map"], 2);
    gpu->ReleaseTexture(backdrop);
    gpu->ReleaseTexture(backdrop); // nothing
}

TEST_F(Direct2D, ShowsAFrameAtItsEnd) {
    const auto gpu = Make();
    DrawScene(*gpu, Scenes()[0]);
    const auto counts = watched->counts;
    gpu->Present();
    EXPECT_EQ(watched->counts, counts);
}

TEST_F(Direct2D, GivesEverythingBackAtItsEnd) {
    {
        const auto gpu = Make();
        for (const auto& scene : Scenes()) DrawScene(*gpu, scene);
        gpu->BeginFrame();
        gpu->BeginOffscreen();
        auto texture = MakeTexture(*gpu, SpottedPicture(20, 20));
        const int before = watched->freed;
        gpu->FreeTexture(texture);
        EXPECT_EQ(watched->freed, before + 1);
        EXPECT_TRUE(gpu->Shutdown());
        EXPECT_FALSE(gpu->Shutdown());
        EXPECT_FALSE(gpu->IsReady());
        gpu->BeginFrame(); // nothing from here on
        gpu->Clear();
        gpu->EndFrame();
        gpu->Resize(50, 50);
        MakeTexture(*gpu, SpottedPicture(20, 20));
        gpu->BeginOffscreen();
        gpu->EndOffscreen();
        gpu->DrawOffscreen();
    }
    EXPECT_GT(watched->made, 10);
    EXPECT_EQ(watched->made, watched->freed);
}

TEST_F(Direct2D, BlendsALineFromTheColourOfOnePointToThatOfTheNext) {
    const auto gpu = Make();
    gpu->BeginFrame();
    gpu->Clear();
    gpu->SetLineWidth(3.0f);
    const std::array<GFX::SPoint, 2> points{{{20, 10, 0, 0xFFFF0000}, {20, 110, 0, 0x800000FF}}};
    gpu->DrawLines(2, points.data(), true, false);
    gpu->EndFrame();
    const auto frame = FrameOf(*gpu);
    for (int y = 10; y < 110; ++y) {
        const auto pixel = frame[static_cast<std::size_t>(y * SceneWidth + 20)];
        const double place = (y - 9.5) / 100.0;
        const double alpha = 1.0 - place * 127.0 / 255.0;
        EXPECT_NEAR(static_cast<double>(pixel >> 16 & 0xFF), 255.0 * (1.0 - place) * alpha, 3.0) << y;
        EXPECT_NEAR(static_cast<double>(pixel & 0xFF), 255.0 * place * alpha, 3.0) << y;
    }
    EXPECT_EQ(frame[9 * SceneWidth + 20], 0xFF000000);
    EXPECT_EQ(frame[110 * SceneWidth + 20], 0xFF000000);
    EXPECT_EQ(frame[50 * SceneWidth + 23], 0xFF000000);
}
