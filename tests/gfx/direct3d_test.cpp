// Direct3D 9 on functions that count and fail.

#include "gfx/d3d/data.h"
#include "gfx/pixel_format.h"
#include "gfx/renderers.h"
#include "tests/gfx/direct_window.h"
#include "tests/gfx/scene_comparison.h"
#include "tests/gfx/watched_calls.h"
#include "tests/support/added_log.h"
#include "tests/support/hand_clock.h"
#include "utils/text.h"

#include <cfenv>
#include <memory>
#include <utility>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr HRESULT Failure = D3DERR_INVALIDCALL; // -2005530516
const std::string Number = "-2005530516";

class Direct3D : public testing::Test {
protected:
    CWatchedDirect3D watched;
    CDirectWindow window{SceneWidth, SceneHeight};

    Direct3D() { watched->result = Failure; }
    std::unique_ptr<GFX::D3D::DATA> Make() { return std::make_unique<GFX::D3D::DATA>(window.Target()); }
};

/// A call of the beginning, what the log says when it fails, and whether the renderer works without it.
struct SStart {
    std::string call;
    int at = 1;
    std::string text;
    bool works = true;
};

const std::vector<SStart>& Starts() {
    static const std::vector<SStart> starts{
        {"GetAdapterDisplayMode", 1, "piD3D09->GetAdapterDisplayMode(D3DADAPTER_DEFAULT, &sMode)", false},
        {"GetDeviceCaps", 1, "piD3D09->GetDeviceCaps(D3DADAPTER_DEFAULT, D3DDEVTYPE_HAL, &sCaps)", false},
        {"CreateDevice", 1,
            "piD3D09->CreateDevice(D3DADAPTER_DEFAULT, D3DDEVTYPE_HAL, nullptr, nBehaviorFlags, &sD3D09PP, "
            "&piD3D09Device)",
            false},
        {"SetRenderState", 1, "SetRenderState(D3DRS_LIGHTING, false)"},
        {"SetRenderState", 2, "SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE)"},
        {"SetRenderState", 3, "SetRenderState(D3DRS_ALPHABLENDENABLE, true)"},
        {"SetRenderState", 4, "SetRenderState(D3DRS_BLENDOP, D3DBLENDOP_ADD)"},
        {"SetRenderState", 5, "SetRenderState(D3DRS_SRCBLEND, D3DBLEND_SRCALPHA)"},
        {"SetRenderState", 6, "SetRenderState(D3DRS_DESTBLEND, D3DBLEND_INVSRCALPHA)"},
        {"SetRenderState", 7, "SetRenderState(D3DRS_SEPARATEALPHABLENDENABLE, true)"},
        {"SetRenderState", 8, "SetRenderState(D3DRS_SRCBLENDALPHA, D3DBLEND_INVDESTALPHA)"},
        {"SetRenderState", 9, "SetRenderState(D3DRS_DESTBLENDALPHA, D3DBLEND_ONE)"},
        {"SetRenderState", 10, "SetRenderState(D3DRS_BLENDOPALPHA, D3DBLENDOP_ADD)"},
        {"SetTextureStageState", 1, "SetTextureStageState(0, D3DTSS_COLOROP, D3DTOP_MODULATE)"},
        {"SetTextureStageState", 2, "SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_MODULATE)"},
        {"SetSamplerState", 1, "SetSamplerState(0, D3DSAMP_MINFILTER, D3DTEXF_LINEAR)"},
        {"SetSamplerState", 2, "SetSamplerState(0, D3DSAMP_MAGFILTER, D3DTEXF_LINEAR)"},
        {"SetSamplerState", 3, "SetSamplerState(0, D3DSAMP_ADDRESSU, D3DTADDRESS_CLAMP)"},
        {"SetSamplerState", 4, "SetSamplerState(0, D3DSAMP_ADDRESSV, D3DTADDRESS_CLAMP)"},
        {"SetFVF", 1, "SetFVF(D3DFVF_XYZ | D3DFVF_DIFFUSE | D3DFVF_TEX1)"},
        {"GetAdapterIdentifier", 1, "piD3D09->GetAdapterIdentifier(D3DADAPTER_DEFAULT, 0, &sAdapter)"},
        {"CreateAdditionalSwapChain", 1, "CreateAdditionalSwapChain(&sD3D09PP, &_piD3D09SwapChain)", false},
        {"GetBackBuffer", 1, "GetBackBuffer(0, D3DBACKBUFFER_TYPE_MONO, &_piD3D09Surface)", false},
        {"CreateDepthStencilSurface", 1,
            "CreateDepthStencilSurface(sD3D09PP.BackBufferWidth, sD3D09PP.BackBufferHeight, D3DFMT_D16, "
            "D3DMULTISAMPLE_TYPE::D3DMULTISAMPLE_NONE, 0, false, &_piDepthStencil, nullptr)"},
        {"SetDepthStencilSurface", 1, "SetDepthStencilSurface(_piDepthStencil)"},
        {"SetTransform", 1, "SetTransform(D3DTS_PROJECTION, &mProj)"},
        {"SetRenderTarget", 1, "SetRenderTarget(0, _piD3D09Surface)"}};
    return starts;
}

} // namespace

TEST_F(Direct3D, IsReadyAndSaysWhatItDrawsWith) {
    const CAddedLog log;
    const auto gpu = Make();
    EXPECT_TRUE(gpu->IsReady());
    EXPECT_EQ(std::u16string(gpu->GetName()), u"Direct3D9");
    EXPECT_TRUE(gpu->IsCurrent());
    EXPECT_FALSE(gpu->IsOffscreenCapable());
    const auto number = [](std::int32_t value) { return std::to_string(value); };
    const std::string limits =
        " | NPOT=" + std::string(gpu->AnySizeTextures() ? "true" : "false") +
        " | SquareOnly=false | MinTextureW=" + number(gpu->MinTextureW()) +
        " | MinTextureH=" + number(gpu->MinTextureH()) + " | MaxTextureW=" + number(gpu->MaxTextureW()) +
        " | MaxTextureH=" + number(gpu->MaxTextureH()) + " | MaxAspect=" + number(gpu->MaxAspect()) + "\r\n";
    EXPECT_TRUE(log.Text().starts_with("Direct3D=v9 | ")) << log.Text();
    EXPECT_TRUE(log.Text().ends_with(limits)) << log.Text() << limits;
    EXPECT_GT(gpu->MaxTextureW(), 1000);
}

TEST_F(Direct3D, IsMadeOfATokenChainAndTheRealOne) {
    static std::vector<D3DPRESENT_PARAMETERS> made;
    static std::vector<DWORD> flags;
    made.clear();
    flags.clear();
    auto table = *Platform::Direct3D();
    static const auto device = table.CreateDevice;
    static const auto chain = table.CreateAdditionalSwapChain;
    table.CreateDevice = [](IDirect3D9* direct3D, UINT adapter, D3DDEVTYPE type, HWND focus, DWORD behaviour,
                             D3DPRESENT_PARAMETERS* parameters, IDirect3DDevice9** result) {
        made.push_back(*parameters);
        flags.push_back(behaviour);
        EXPECT_EQ(adapter, UINT{D3DADAPTER_DEFAULT});
        EXPECT_EQ(type, D3DDEVTYPE_HAL);
        EXPECT_EQ(focus, nullptr);
        return device(direct3D, adapter, type, focus, behaviour, parameters, result);
    };
    table.CreateAdditionalSwapChain = [](IDirect3DDevice9* one, D3DPRESENT_PARAMETERS* parameters,
                                          IDirect3DSwapChain9** result) {
        made.push_back(*parameters);
        return chain(one, parameters, result);
    };
    Platform::UseDirect3D(&table);
    const auto gpu = Make();
    gpu->Resize(70, 50);
    gpu->Resize(0, 50);
    gpu->Resize(70, -1);
    ASSERT_EQ(made.size(), 3u);
    EXPECT_EQ(made[0].BackBufferWidth, 1u);
    EXPECT_EQ(made[0].BackBufferHeight, 1u);
    EXPECT_EQ(made[0].BackBufferCount, 1u);
    EXPECT_EQ(made[0].SwapEffect, D3DSWAPEFFECT_DISCARD);
    for (const auto& parameters : made) {
        EXPECT_TRUE(parameters.Windowed);
        EXPECT_EQ(parameters.hDeviceWindow, window.Handle());
        EXPECT_EQ(parameters.PresentationInterval, UINT{D3DPRESENT_INTERVAL_IMMEDIATE});
        EXPECT_EQ(parameters.BackBufferFormat, made[0].BackBufferFormat);
    }
    EXPECT_EQ(made[1].BackBufferWidth, static_cast<UINT>(SceneWidth));
    EXPECT_EQ(made[1].BackBufferHeight, static_cast<UINT>(SceneHeight));
    EXPECT_EQ(made[2].BackBufferWidth, 70u);
    EXPECT_EQ(made[2].BackBufferHeight, 50u);
    EXPECT_TRUE(flags[0] == 64u || flags[0] == 32u);
    Platform::UseDirect3D(nullptr);
}

TEST_F(Direct3D, TransformsVerticesWhereTheDeviceCan) {
    static DWORD offered;
    static DWORD flags;
    auto table = *Platform::Direct3D();
    static const auto caps = table.GetDeviceCaps;
    table.GetDeviceCaps = [](IDirect3D9* direct3D, UINT adapter, D3DDEVTYPE type, D3DCAPS9* result) {
        const auto answer = caps(direct3D, adapter, type, result);
        result->DevCaps = offered;
        return answer;
    };
    table.CreateDevice = [](IDirect3D9*, UINT, D3DDEVTYPE, HWND, DWORD behaviour, D3DPRESENT_PARAMETERS*,
                             IDirect3DDevice9**) {
        flags = behaviour;
        return Failure;
    };
    Platform::UseDirect3D(&table);
    for (const DWORD wanted : {64u, 32u}) {
        offered = wanted == 64u ? D3DDEVCAPS_HWTRANSFORMANDLIGHT : 0;
        Make();
        EXPECT_EQ(flags, wanted);
    }
    Platform::UseDirect3D(nullptr);
}

TEST_F(Direct3D, TakesItsLimitsFromTheDevice) {
    static DWORD textures;
    auto table = *Platform::Direct3D();
    static const auto caps = table.GetDeviceCaps;
    table.GetDeviceCaps = [](IDirect3D9* direct3D, UINT adapter, D3DDEVTYPE type, D3DCAPS9* result) {
        const auto answer = caps(direct3D, adapter, type, result);
        result->MaxTextureWidth = 300;
        result->MaxTextureHeight = 200;
        result->MaxTextureAspectRatio = 9;
        result->TextureCaps = textures;
        return answer;
    };
    Platform::UseDirect3D(&table);
    struct SCase {
        DWORD textures;
        bool anySize;
        const char* text;
    };
    for (const auto& one : {SCase{0, true, "NPOT=true | SquareOnly=false"},
             SCase{D3DPTEXTURECAPS_POW2, false, "NPOT=false | SquareOnly=false"},
             SCase{D3DPTEXTURECAPS_POW2 | D3DPTEXTURECAPS_NONPOW2CONDITIONAL, true,
                 "NPOT=true | SquareOnly=false"},
             SCase{D3DPTEXTURECAPS_SQUAREONLY, false, "NPOT=true | SquareOnly=true"}}) {
        textures = one.textures;
        const CAddedLog log;
        const auto gpu = Make();
        EXPECT_EQ(gpu->AnySizeTextures(), one.anySize) << one.text;
        EXPECT_EQ(gpu->MaxTextureW(), 300);
        EXPECT_EQ(gpu->MaxTextureH(), 200);
        EXPECT_EQ(gpu->MaxAspect(), 9);
        EXPECT_NE(log.Text().find(one.text), std::string::npos) << log.Text();
    }
    Platform::UseDirect3D(nullptr);
}

TEST_F(Direct3D, DrawsThePaddedPicturesOfLimitedDevicesAsAnyOthers) {
    static DWORD textures;
    auto table = *Platform::Direct3D();
    static const auto caps = table.GetDeviceCaps;
    table.GetDeviceCaps = [](IDirect3D9* direct3D, UINT adapter, D3DDEVTYPE type, D3DCAPS9* result) {
        const auto answer = caps(direct3D, adapter, type, result);
        result->TextureCaps = textures;
        return answer;
    };
    Platform::UseDirect3D(&table);
    for (const auto limits : {D3DPTEXTURECAPS_POW2, D3DPTEXTURECAPS_POW2 | D3DPTEXTURECAPS_SQUAREONLY}) {
        textures = static_cast<DWORD>(limits);
        const auto gpu = Make();
        gpu->BeginFrame();
        gpu->Clear();
        const auto picture = SpottedPicture(31, 23);
        GFX::STexture texture;
        texture.nW = 31;
        texture.nH = 23;
        texture.fU = 31.0f / 32.0f;
        texture.fV = 23.0f / 32.0f;
        gpu->CreateTexture(picture, texture, 32, 32);
        ASSERT_NE(texture.piGDIP, 0u);
        GFX::SDraw draw;
        draw.sTo = {5, 7, 31, 23};
        draw.sFrom = {0.0f, texture.fU, 0.0f, texture.fV};
        gpu->DrawTexture(texture, draw);
        gpu->EndFrame();
        CPlainRenderer plain(SceneWidth, SceneHeight);
        plain.Clear();
        const auto whole = MakeTexture(plain, picture);
        draw.sFrom = {};
        plain.DrawTexture(whole, draw);
        EXPECT_LE(CompareFrames(FrameOf(*gpu), FrameOf(plain), nullptr).most, 1);
    }
    Platform::UseDirect3D(nullptr);
}

TEST_F(Direct3D, LeavesTheHostsArithmeticAlone) {
    auto table = *Platform::Direct3D();
    static const auto device = table.CreateDevice;
    table.CreateDevice = [](IDirect3D9* direct3D, UINT adapter, D3DDEVTYPE type, HWND focus, DWORD behaviour,
                             D3DPRESENT_PARAMETERS* parameters, IDirect3DDevice9** result) {
        const HRESULT made = device(direct3D, adapter, type, focus, behaviour, parameters, result);
        std::fesetround(FE_DOWNWARD);
        return made;
    };
    Platform::UseDirect3D(&table);
    Make();
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
    std::fesetround(FE_TONEAREST);
    Platform::UseDirect3D(nullptr);
}

TEST_F(Direct3D, LogsEachCallOfItsBeginningThatFailsAndIsReadyIfItCanDraw) {
    for (const auto& start : Starts()) {
        watched->Fail(start.call, start.at);
        const CAddedLog log;
        {
            const auto gpu = Make();
            EXPECT_EQ(gpu->IsReady(), start.works) << start.text;
        }
        EXPECT_EQ(ErrorsOf(log.Text()), std::vector<std::string>{"Error=" + start.text + ":" + Number});
        EXPECT_EQ(watched->made, watched->freed) << start.text;
    }
}

TEST_F(Direct3D, MakesNoOtherCallsInItsBeginning) {
    std::map<std::string, int> listed{{"Direct3DCreate9", 1}};
    for (const auto& start : Starts()) ++listed[start.call];
    Make()->Shutdown();
    auto counts = watched->counts;
    counts.erase("Release");
    EXPECT_EQ(counts, listed);
}

TEST_F(Direct3D, IsNotReadyWithoutTheLibrarysObject) {
    watched->Fail("Direct3DCreate9");
    const CAddedLog log;
    EXPECT_FALSE(Make()->IsReady());
    EXPECT_EQ(ErrorsOf(log.Text()).size(), 1u);
}

TEST_F(Direct3D, ThatFailsIsFollowedByTheNextRendererWithItsTexts) {
    auto table = GFX::Renderers();
    table[GFX::OpenGL].pCreate = [](const GFX::SRendererTarget&, GFX::EReason) -> std::unique_ptr<GFX::GPU> {
        return nullptr;
    };
    GFX::UseRenderers(&table);
    const std::string begin =
        "Can not initialize Direct3D9 hardware renderer for KAV Sorrel Limiter v1.0.1.0! "
        "Please update your graphics hardware or switch GPU in multi-GPU "
        "environment.\r\n\r\nAttempt to create OpenGL hardware renderer now...";
    for (const auto& start : Starts()) {
        if (start.works) continue;
        watched->Fail(start.call, start.at);
        std::vector<std::string> boxes;
        const CAddedLog log;
        auto created = GFX::CreateRenderer(window.Handle(), SceneWidth, SceneHeight, GFX::Direct3D9,
            [&](std::u16string_view, std::u16string_view text) { boxes.push_back(Utils::ToUtf8(text)); });
        EXPECT_TRUE(created.IsReady());
        EXPECT_EQ(created.nRenderer, GFX::Direct2D);
        ASSERT_EQ(boxes.size(), 2u);
        EXPECT_EQ(boxes[0], begin);
        const auto text = log.Text();
        const auto call = text.find("Error=" + start.text + ":" + Number);
        EXPECT_LT(call, text.find("Error=" + begin)) << text;
    }
    GFX::UseRenderers(nullptr);
}

// In the middle of a session

TEST_F(Direct3D, LosesWhatAFailedCallWouldHaveDrawnAndNoMore) {
    struct SCall {
        std::string call;
        int at;
        std::string text;
    };
    const auto gpu = Make();
    ASSERT_TRUE(gpu->IsReady());
    CHandClock clock;
    for (const auto& [name, calls] :
        std::vector<std::pair<std::string, std::vector<SCall>>>{
            {"transformed",
                {{"Clear", 1, "Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF000000, 1.0f, 0)"},
                    {"BeginScene", 1, "BeginScene()"}, {"EndScene", 1, "EndScene()"},
                    {"CreateTexture", 2,
                        "CreateTexture(a_nTexW, a_nTexH, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &piTexture, "
                        "nullptr)"},
                    {"LockTexture", 2, "piTexture->LockRect(0, &sLockedRect, nullptr, 0)"},
                    {"UnlockTexture", 2, "piTexture->UnlockRect(0)"},
                    {"SetTexture", 2, "SetTexture(0, piTexture)"},
                    {"SetTransform", 2, "SetTransform(D3DTS_WORLD, &mWorld)"},
                    {"SetTransform", 3, "SetTransform(D3DTS_WORLD, &mWorld)"},
                    {"DrawPrimitiveUP", 2,
                        "DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, sVertices, sizeof(SVertex))"},
                    {"LockSurface", 1,
                        "_piD3D09Surface->LockRect(&sLockedRect, nullptr, D3DLOCK_READONLY)"}}},
            {"clipped", {{"SetRenderState", 2, "SetRenderState(D3DRS_SCISSORTESTENABLE, true)"},
                            {"SetRenderState", 5, "SetRenderState(D3DRS_SCISSORTESTENABLE, false)"},
                            {"SetScissorRect", 1, "SetScissorRect(&rcScissors)"}}},
            {"hard_lines",
                {{"SetTexture", 2, "SetTexture(0, nullptr)"},
                    {"DrawPrimitiveUP", 2,
                        "DrawPrimitiveUP(D3DPT_TRIANGLELIST, nTriangles, sVertices, sizeof(SVertex))"},
                    {"SetRenderState", 2,
                        "SetRenderState(D3DRS_ANTIALIASEDLINEENABLE, _bLineSmooth = a_bSmooth)"}}}}) {
        const auto& scene = SceneOf(name);
        DrawScene(*gpu, scene);
        gpu->Present();
        const auto expected = FrameOf(*gpu);
        for (const auto& [call, at, text] : calls) {
            const CAddedLog log;
            clock.Advance(2000); // the same line is logged once a second
            watched->Fail(call, at);
            DrawScene(*gpu, scene);
            gpu->Present();
            FrameOf(*gpu);
            EXPECT_EQ(ErrorsOf(log.Text()), std::vector<std::string>{"Error=" + text + ":" + Number}) << call;
            DrawScene(*gpu, scene);
            EXPECT_EQ(FrameOf(*gpu), expected) << call;
        }
    }
}

TEST_F(Direct3D, LogsASurfaceThatStaysLocked) {
    const auto gpu = Make();
    const CAddedLog log;
    watched->Fail("UnlockSurface");
    FrameOf(*gpu);
    EXPECT_EQ(log.Text(), "Error=_piD3D09Surface->UnlockRect():" + Number + "\r\n");
}

TEST_F(Direct3D, LogsAFrameThatCouldNotBeShown) {
    const auto gpu = Make();
    const CAddedLog log;
    watched->Fail("Present");
    gpu->Present();
    EXPECT_EQ(log.Text(),
        "Error=_piD3D09SwapChain->Present(nullptr, nullptr, nullptr, nullptr, 0):" + Number + "\r\n");
    EXPECT_FALSE(gpu->IsRenewalDue());
}

TEST_F(Direct3D, IsReadyAgainAfterASizeThatCouldNotBeMade) {
    const auto gpu = Make();
    for (const char* call : {"SetRenderTarget", "SetTransform", "CreateDepthStencilSurface"}) {
        watched->Fail(call);
        gpu->Resize(70, 50);
        EXPECT_TRUE(gpu->IsReady());
        EXPECT_TRUE(gpu->IsRenewalDue()) << call;
    }
    for (const char* call : {"CreateAdditionalSwapChain", "GetBackBuffer"}) {
        watched->Fail(call);
        gpu->Resize(70, 50);
        EXPECT_FALSE(gpu->IsReady());
        EXPECT_TRUE(gpu->IsRenewalDue()) << "the editor makes it anew, unless its size changes before";
        DrawScene(*gpu, Scenes()[0]); // nothing, and nothing ends
        gpu->Present();
        EXPECT_EQ(FrameOf(*gpu), Frame(SceneWidth * SceneHeight, 0xFF000000));
        gpu->Resize(SceneWidth, SceneHeight);
        EXPECT_TRUE(gpu->IsReady());
        EXPECT_FALSE(gpu->IsRenewalDue());
        EXPECT_TRUE(DrawsAsThePlainRenderer(*gpu, Scenes()[0]));
    }
}

TEST_F(Direct3D, GoesOnAfterAFrameThatWasDropped) {
    const auto gpu = Make();
    gpu->BeginFrame();
    gpu->SetClip(10, 10, 5, 5);
    EXPECT_TRUE(DrawsAsThePlainRenderer(*gpu, SceneOf("clipped")));
}

// A device that is lost

TEST_F(Direct3D, IsDueForRenewalOnceALostDeviceCanBeHadAgain) {
    for (const HRESULT lost : {D3DERR_DEVICELOST, D3DERR_DEVICENOTRESET}) {
        const auto gpu = Make();
        EXPECT_FALSE(gpu->IsRenewalDue());
        watched->result = lost;
        watched->Fail("Present");
        gpu->Present();
        watched->result = D3DERR_DEVICELOST;
        watched->FailAlways("TestCooperativeLevel");
        EXPECT_FALSE(gpu->IsRenewalDue()) << "it can't be had yet";
        watched->result = D3DERR_DEVICENOTRESET;
        EXPECT_TRUE(gpu->IsRenewalDue());
        watched->FailNothing();
        EXPECT_TRUE(gpu->IsRenewalDue()) << "it works again by itself";
    }
}

TEST_F(Direct3D, LearnsOfALossFromTheDeviceItself) {
    const auto gpu = Make();
    watched->result = D3DERR_DEVICELOST;
    watched->Fail("TestCooperativeLevel");
    EXPECT_FALSE(gpu->IsRenewalDue());
    EXPECT_TRUE(gpu->IsRenewalDue());
    watched->counts.clear();
    gpu->Present();
    EXPECT_EQ(watched->counts["Present"], 0) << "the frame is due again on the new device";
}

TEST_F(Direct3D, IsNotDueForRenewalAfterAnyOtherError) {
    const auto gpu = Make();
    watched->FailAlways("TestCooperativeLevel");
    EXPECT_FALSE(gpu->IsRenewalDue());
    watched->FailNothing();
    EXPECT_FALSE(gpu->IsRenewalDue());
    gpu->Shutdown();
    EXPECT_FALSE(gpu->IsRenewalDue());
}

// The end

TEST_F(Direct3D, GivesEverythingBackAtItsEnd) {
    {
        const auto gpu = Make();
        for (const auto& scene : Scenes()) DrawScene(*gpu, scene);
        auto texture = MakeTexture(*gpu, SpottedPicture(20, 20));
        const int before = watched->freed;
        gpu->FreeTexture(texture);
        EXPECT_EQ(texture, GFX::FreedTexture());
        EXPECT_EQ(watched->freed, before + 1);
        EXPECT_TRUE(gpu->Shutdown());
        EXPECT_FALSE(gpu->Shutdown());
        EXPECT_FALSE(gpu->IsReady());
        gpu->BeginFrame(); // nothing from here on
        gpu->Clear();
        gpu->EndFrame();
        gpu->Present();
        gpu->Resize(50, 50);
        MakeTexture(*gpu, SpottedPicture(20, 20));
    }
    EXPECT_GT(watched->made, 10);
    EXPECT_EQ(watched->made, watched->freed);
}

TEST_F(Direct3D, MakesTexturesFromEveryFormat) {
    const auto gpu = Make();
    const std::array<std::uint8_t, 12> rgb{1, 2, 3, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    GFX::STexture texture;
    texture.nW = texture.nH = 2;
    gpu->CreateTextureBits(rgb.data(), 6, GFX::Rgb24, texture, 2, 2, 2, 2);
    gpu->BeginFrame();
    gpu->Clear();
    GFX::SDraw draw;
    draw.sTo = {10, 10, 2, 2};
    gpu->DrawTexture(texture, draw);
    gpu->EndFrame();
    const auto frame = FrameOf(*gpu);
    EXPECT_EQ(frame[10 * SceneWidth + 10], 0xFF030201);
    EXPECT_EQ(frame[10 * SceneWidth + 11], 0xFF3C3228);
    EXPECT_EQ(frame[11 * SceneWidth + 11], 0xFF786E64);
    const CAddedLog log;
    GFX::STexture none;
    gpu->CreateTextureBits(nullptr, 6, GFX::Rgb24, none, 2, 2, 2, 2);
    gpu->CreateTextureBits(rgb.data(), 5, GFX::Rgb24, none, 2, 2, 2, 2);
    gpu->CreateTextureBits(rgb.data(), 6, GFX::Rgb24, none, 2, 2, 1, 2);
    gpu->CreateTextureBits(rgb.data(), 6, 12345, none, 2, 2, 2, 2);
    EXPECT_EQ(none.piGDIP, 0u);
    EXPECT_EQ(log.Text(), "Error=CreateTextureBits(a_pBits, a_nPitch, a_nPixelFormat):2\r\n");
}

TEST_F(Direct3D, DrawsTheFrameOfASpriteBetweenItsMargins) {
    const auto gpu = Make();
    gpu->BeginFrame();
    gpu->Clear();
    const auto sheet = MakeTexture(*gpu, SpottedPicture(24, 24, 2, 2), 2, 2);
    GFX::SDraw9 draw;
    draw.sTo = {10, 10, 24, 24};
    draw.nMrgL = draw.nMrgT = draw.nMrgR = draw.nMrgB = 6;
    draw.fValue = 0.67f; // the third of four
    gpu->DrawTexture9(sheet, draw);
    gpu->EndFrame();
    CPlainRenderer plain(SceneWidth, SceneHeight);
    plain.Clear();
    const auto expected = MakeTexture(plain, SpottedPicture(24, 24, 2, 2), 2, 2);
    GFX::SDraw whole;
    whole.sTo = draw.sTo;
    whole.sFrom = CellOf(expected, 0, 1);
    plain.DrawTexture(expected, whole);
    EXPECT_LE(CompareFrames(FrameOf(*gpu), FrameOf(plain), nullptr).most, 1);
}

TEST_F(Direct3D, BlendsALineFromTheColourOfOnePointToThatOfTheNext) {
    const auto gpu = Make();
    gpu->BeginFrame();
    gpu->Clear();
    gpu->SetLineWidth(3.0f);
    const std::array<GFX::SPoint, 2> points{{{20, 10, 0, 0xFFFF0000}, {20, 110, 0, 0xFF0000FF}}};
    gpu->DrawLines(2, points.data(), true, true);
    gpu->EndFrame();
    const auto frame = FrameOf(*gpu);
    for (int y = 10; y < 110; ++y) {
        const auto pixel = frame[static_cast<std::size_t>(y * SceneWidth + 20)];
        EXPECT_NEAR(static_cast<double>(pixel >> 16 & 0xFF), 255.0 * (109.5 - y) / 100.0, 3.0) << y;
        EXPECT_NEAR(static_cast<double>(pixel & 0xFF), 255.0 * (y - 9.5) / 100.0, 3.0) << y;
    }
    EXPECT_EQ(frame[9 * SceneWidth + 20], 0xFF000000);
    EXPECT_EQ(frame[110 * SceneWidth + 20], 0xFF000000);
    EXPECT_EQ(frame[50 * SceneWidth + 23], 0xFF000000);
}
