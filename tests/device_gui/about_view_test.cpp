// The view over the panel that says what this is.

#include "device_gui/about_view.h"

#include "device/parameter_table.h"
#include "gui/settings.h"
#include "tests/device_gui/open_panel.h"
#include "tests/support/file_text.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr std::size_t OwnWidgets = 7;

std::int32_t Rounded(double value) {
    return static_cast<std::int32_t>(std::lround(value));
}

class AboutView : public OpenPanel {
protected:
    void SetUp() override {
        OpenPanel::SetUp();
        Gui().Screen().SetRenderer(GFX::DefaultRenderer); // which the user's settings keep
        robot.Tick();
        panel = Gui().AllWidgets().size();
        Gui().OpenAbout();
    }
    /// How many of the lines of a picture begin with `begin` and contain `part`.
    static std::ptrdiff_t Count(const Lines& lines, std::string_view begin, std::string_view part) {
        return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.starts_with(begin) && line.find(part) != std::string::npos;
        });
    }
    template<typename TWidget>
    TWidget& Own() {
        auto* const found = Gui().Find<TWidget>();
        if (found == nullptr) throw std::logic_error("the view isn't open");
        return *found;
    }
    void ClickOk() { Click(Named(u"BtnOk")); }

    std::size_t panel = 0; ///< widgets of the panel
};

} // namespace

TEST_F(AboutView, LiesOverThePanel) {
    EXPECT_TRUE(Gui().IsAboutOpen());
    const auto& all = Gui().AllWidgets();
    ASSERT_EQ(all.size(), panel + OwnWidgets);
    const std::array<std::u16string_view, OwnWidgets> names{u"Background", u"Text", u"BtnOk", u"BtnHelp",
        u"Kavelin | Web Site", u"GUI Rendering", u"SIMD (experimental)"};
    for (std::size_t n = 0; n < OwnWidgets; ++n) EXPECT_EQ(all[panel + n]->Name(), names[n]);
}

TEST_F(AboutView, SaysProductAndVersion) {
    EXPECT_EQ(dynamic_cast<GUI::CLabel&>(Named(u"Text")).Text(), u"KAV Sorrel Limiter VST2 v1.0.1.0");
    EXPECT_EQ(dynamic_cast<GUI::CLabel&>(Named(u"Text")).nTextColor, 0xFFFFFFFFu);
    EXPECT_EQ(dynamic_cast<GUI::CLabel&>(Named(u"BtnOk")).Text(), u"OK");
    EXPECT_EQ(dynamic_cast<GUI::CLabel&>(Named(u"BtnHelp")).Text(), u"Help");
}

TEST_F(AboutView, KeepsItsProportionsAtEveryWidth) {
    for (const std::int32_t width : {754, 500, 1508}) {
        Device().State().ResizeToWidth(width);
        robot.Tick();
        const double w = Gui().Width();
        const double h = Gui().Height();
        ASSERT_EQ(Gui().Width(), width);
        const auto expect = [&](std::u16string_view name, double x, double y, double wide, double high) {
            const auto rect = Named(name).PixelRect();
            EXPECT_NEAR(rect.nL, x, 1.01) << Utils::ToUtf8(name) << width;
            EXPECT_NEAR(rect.nT, y, 1.01) << Utils::ToUtf8(name) << width;
            EXPECT_EQ(rect.nW, Rounded(wide)) << Utils::ToUtf8(name) << width;
            EXPECT_EQ(rect.nH, Rounded(high)) << Utils::ToUtf8(name) << width;
        };
        expect(u"Background", 0, 0, w, h);
        expect(u"Text", 0, 0.223 * h, w, 0.55 * h);
        expect(u"BtnOk", 0.586 * w - 0.075 * w, 0.95 * h - 0.06 * w, 0.15 * w, 0.06 * w);
        expect(u"BtnHelp", 0.414 * w - 0.075 * w, 0.95 * h - 0.06 * w, 0.15 * w, 0.06 * w);
        expect(u"Kavelin | Web Site", 0.5 * w - 0.075 * w, 0.03 * h, 0.15 * w, 0.099 * w);
        expect(u"GUI Rendering", 0.988 * w - 0.08 * w, 0.027 * h, 0.08 * w, 0.08 * w);
        expect(u"SIMD (experimental)", 0.988 * w - 0.08 * w, 0.21 * h, 0.08 * w, 0.045 * w);
    }
}

TEST_F(AboutView, TheUserMayResizeTheEditorMeanwhile) {
    const auto before = Own<CBackdrop>().PixelRect();
    robot.Drag({752, 300}, {852, 300}, 4);
    robot.Tick();
    EXPECT_EQ(Gui().Width(), 854);
    EXPECT_TRUE(Gui().IsAboutOpen());
    EXPECT_EQ(Own<CBackdrop>().PixelRect().nW, 854);
    EXPECT_NE(Own<CBackdrop>().PixelRect(), before);
    EXPECT_EQ(Count(Picture(), "DrawTexture ", " to 0,0 854x626 colour FF808080"), 1);
    robot.Drag({852, 300}, {752, 300}); // the user's settings keep the width
}

TEST_F(AboutView, TakesAPictureOfThePanelWithoutItselfAndHints) {
    ClickOk();
    robot.Tick();
    Point(Named(u"Threshold"));
    robot.Advance(1000);
    ASSERT_TRUE(Gui().Hint().IsVisible());
    const auto visible = Gui().Hint().sVisible.fValue;
    renderers.Calls().clear();
    Gui().OpenAbout();
    const auto& calls = renderers.Calls();
    const auto made = std::find(calls.begin(), calls.end(), "MakeBackdrop 754x553");
    ASSERT_NE(made, calls.end());
    const Lines panelAlone(calls.begin(), made);
    EXPECT_EQ(Count(panelAlone, "BeginFrame", ""), 1);
    EXPECT_EQ(Count(panelAlone, "EndFrame", ""), 1);
    EXPECT_EQ(Count(panelAlone, "DrawTexture", "FF808080"), 0);
    EXPECT_EQ(Count(panelAlone, "DrawTexture9", ""), 0) << "a hint would be one";
    EXPECT_GT(visible, 0.0f);
    const auto picture = Picture();
    EXPECT_EQ(Count(picture, "DrawTexture ", " to 0,0 754x553 colour FF808080"), 1);
}

TEST_F(AboutView, LiesOnAPlainGroundWithoutAPictureOfThePanel) {
    renderers.Live().makesTextures = false;
    ClickOk();
    robot.Tick();
    Gui().OpenAbout();
    robot.Tick();
    renderers.Live().makesTextures = true;
    const auto picture = Picture();
    EXPECT_EQ(Count(picture, "CreateTextureBits ", " 1x1 in 1x1"), 1);
    EXPECT_EQ(Count(picture, "DrawTexture ", " to 0,0 754x553 colour FF808080"), 1);
    EXPECT_EQ(renderers.Live().lastBits, (std::vector<std::uint32_t>{0xFFFFFFFF}));
    EXPECT_EQ(Count(Picture(), "CreateTextureBits ", " 1x1 in"), 0) << "once";
}

TEST_F(AboutView, ThePlainGroundIsPaddedForARendererThatAsksForIt) {
    renderers.Live().makesTextures = false;
    ClickOk();
    robot.Tick();
    Gui().OpenAbout();
    renderers.Live().makesTextures = true;
    renderers.Live().anySize = false;
    const auto picture = Picture();
    EXPECT_EQ(Count(picture, "CreateTextureBits ", " 1x1 in 2x2"), 1);
    EXPECT_EQ(Count(picture, "DrawTexture ", " to 0,0 754x553 from 0..0.5,0..0.5 colour FF808080"), 1);
}

TEST_F(AboutView, NothingOfThePanelIsHit) {
    Told();
    for (const auto* const name :
        {u"Threshold", u"Input Gain", u"Limiter", u"ToolPatch", u"Macro 1", u"Oversampling", u"ToolBtnFx2"}) {
        auto& widget = Named(name);
        for (const auto flags : {std::uint32_t{GUI::MouseLeft}, std::uint32_t{GUI::MouseRight},
                 GUI::MouseLeft | GUI::MouseControl}) {
            Click(widget, flags);
            EXPECT_FALSE(window.menuOpen) << Utils::ToUtf8(name);
            EXPECT_FALSE(window.textBox) << Utils::ToUtf8(name);
        }
        const auto [x, y] = MiddleOf(widget);
        robot.Drag({x, y}, {x, y - 30});
        Wheel(widget, 1.0f);
        EXPECT_NE(Gui().Pointer().Hover(), &widget);
    }
    robot.Advance(1000);
    EXPECT_FALSE(Gui().Hint().IsVisible());
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Gui().Records(), 0u);
}

TEST_F(AboutView, AWheelUnderAPointerThatRestsIsNotThePanelsEither) {
    ClickOk();
    robot.Tick();
    Point(Named(u"Threshold"));
    Told();
    Gui().OpenAbout();
    robot.Wheel(-1.0f);
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(AboutView, EndsADragAndATextBoxWhenItOpens) {
    ClickOk();
    robot.Tick();
    auto& fader = Named(u"Threshold");
    const auto [x, y] = MiddleOf(fader);
    robot.Press(x, y);
    robot.Move(x, y + 50);
    Gui().OpenAbout();
    const auto value = effect->Get(HostIndexOf(33));
    robot.Move(x, y + 90);
    robot.Release(x, y + 90);
    EXPECT_EQ(effect->Get(HostIndexOf(33)), value);
    const auto told = Told();
    EXPECT_EQ(std::count(told.begin(), told.end(), "end " + std::to_string(HostIndexOf(33))), 1);
    ClickOk();
    robot.Tick();
    Click(fader, GUI::MouseRight);
    ASSERT_TRUE(window.textBox);
    Gui().OpenAbout();
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(effect->Get(HostIndexOf(33)), value);
}

TEST_F(AboutView, KeysOfThePanelDoNothing) {
    dynamic_cast<GUI::CKnob&>(Named(u"Threshold")).SetValue(0.5f, true);
    window.leftControl = true;
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(effect->Get(HostIndexOf(33)), 0.5f);
    ClickOk();
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(effect->Get(HostIndexOf(33)), 1.0f);
}

TEST_F(AboutView, OkClosesItAtOnceAndForGood) {
    auto& ok = Named(u"BtnOk");
    const auto [x, y] = MiddleOf(ok);
    robot.Move(x, y);
    robot.Press(x, y);
    EXPECT_TRUE(Gui().IsAboutOpen());
    robot.Release(x, y);
    EXPECT_FALSE(Gui().IsAboutOpen());
    EXPECT_EQ(Gui().Pointer().Hover(), nullptr);
    Click(Named(u"Limiter"));
    EXPECT_EQ(effect->Get(HostIndexOf(34)), 0.0f) << "the panel is in reach again";
    renderers.Calls().clear();
    robot.Tick();
    EXPECT_EQ(Count(renderers.Calls(), "DrawTexture", "FF808080"), 0);
    EXPECT_EQ(Gui().AllWidgets().size(), panel);
    EXPECT_EQ(Gui().Screen().Backdrop().piGDIP, 0u);
    robot.Advance(500);
    renderers.Calls().clear();
    robot.Advance(500);
    EXPECT_EQ(renderers.Calls(), Lines{}) << "nothing of it moves on";
}

TEST_F(AboutView, TheRightButtonDoesNotCloseIt) {
    Click(Named(u"BtnOk"), GUI::MouseRight);
    EXPECT_TRUE(Gui().IsAboutOpen());
}

TEST_F(AboutView, OpeningItAgainChangesNothing) {
    const auto before = Gui().AllWidgets();
    Gui().OpenAbout();
    EXPECT_EQ(Gui().AllWidgets(), before);
}

TEST_F(AboutView, OpensAgainInTheMomentAfterItsEnd) {
    ClickOk();
    Gui().OpenAbout();
    EXPECT_TRUE(Gui().IsAboutOpen());
    EXPECT_EQ(Gui().AllWidgets().size(), panel + OwnWidgets);
    robot.Tick();
    EXPECT_TRUE(Gui().IsAboutOpen());
    ClickOk();
    robot.Tick();
    EXPECT_EQ(Gui().AllWidgets().size(), panel);
}

TEST_F(AboutView, GivesBackAllTextures) {
    ClickOk();
    robot.Advance(500);
    Picture();
    const auto before = renderers.Live().LiveTextures().size();
    for (int n = 0; n < 5; ++n) {
        Gui().OpenAbout();
        Picture();
        ClickOk();
        robot.Tick();
    }
    EXPECT_LE(renderers.Live().LiveTextures().size(), before + 5) << "stored pictures may stay";
    const auto after = renderers.Live().LiveTextures().size();
    for (int n = 0; n < 5; ++n) {
        Gui().OpenAbout();
        Picture();
        ClickOk();
        robot.Tick();
    }
    EXPECT_EQ(renderers.Live().LiveTextures().size(), after);
}

TEST_F(AboutView, ClosesWithTheEditor) {
    Close();
    EXPECT_FALSE(Gui().IsAboutOpen());
    EXPECT_EQ(Gui().AllWidgets().size(), panel);
    Open();
    robot.Tick();
    EXPECT_FALSE(Gui().IsAboutOpen());
    Gui().OpenAbout();
    EXPECT_TRUE(Gui().IsAboutOpen());
    robot.Tick();
}

TEST_F(AboutView, EndsWithTheInstance) {
    robot.Tick();
    effect.reset();
    EXPECT_EQ(window.client, nullptr);
}

TEST_F(AboutView, DoesNotOpenWithoutAWindow) {
    Close();
    Gui().OpenAbout();
    EXPECT_FALSE(Gui().IsAboutOpen());
    EXPECT_EQ(Gui().AllWidgets().size(), panel);
}

TEST_F(AboutView, ClosesAfterTheSystemTookTheWindowAway) {
    window.client->OnGone();
    Close();
    EXPECT_EQ(Gui().AllWidgets().size(), panel);
}

TEST_F(AboutView, StaysOpenWhileTheHostLoadsAProject) {
    Device().Simd() = true;
    auto chunk = Chunk(false);
    Device().Simd() = false;
    robot.Tick();
    ASSERT_EQ(Own<CSwitchSIMD>().Item(), 0);
    ASSERT_TRUE(SetChunk(chunk, false));
    robot.Tick();
    EXPECT_TRUE(Gui().IsAboutOpen());
    EXPECT_EQ(Own<CSwitchSIMD>().Item(), Device().Simd() ? 1 : 0) << "the switch shows what is";
    Picture();
}

TEST_F(AboutView, ThePanelBelowGoesOnTakingTheHostsValues) {
    effect->Set(HostIndexOf(33), 0.25f);
    robot.Tick();
    EXPECT_EQ(dynamic_cast<GUI::CKnob&>(Named(u"Threshold")).Value(), 0.25f);
}

TEST_F(AboutView, ItsButtonsAreTheFadedDialogButton) {
    const auto picture = Picture();
    EXPECT_EQ(Count(picture, "DrawTexture ", " colour 96FFFFFF"), 2);
    Point(Named(u"BtnHelp"));
    EXPECT_EQ(Count(Picture(), "DrawTexture ", " colour 96FFFFFF"), 1) << "one is under the pointer";
}

// The mark

TEST_F(AboutView, TheMarkPulses) {
    auto& logo = Own<CLogo>();
    const auto expect = [&logo](std::uint32_t phase) {
        const std::uint32_t ms = phase > 200 ? phase - 200 : phase;
        const double t = ms / 1000.0;
        const auto alpha = static_cast<std::uint32_t>(255 + (0x81 - 255) * t);
        const auto red = static_cast<std::uint32_t>(255 - 255 * t);
        EXPECT_NEAR(logo.nColor >> 24, alpha, 1.001) << phase;
        EXPECT_NEAR(logo.nColor >> 16 & 0xFF, red, 1.001) << phase;
        EXPECT_EQ(logo.nColor & 0xFFFF, 0u) << phase;
        EXPECT_EQ(logo.nColorHover, logo.nColor);
        for (const std::size_t axis : {0u, 1u}) {
            for (const auto scale : logo.asLook[axis]) EXPECT_NEAR(scale, 1 - 0.1 * t, 1e-5) << phase;
        }
        EXPECT_EQ(logo.asLook[2][0], 1.0f);
    };
    expect(0);
    std::uint32_t phase = 0;
    for (const std::uint32_t ms : {100u, 100u, 1u, 399u, 399u, 1u, 50u, 1000u, 4000000000u}) {
        logo.Tick(ms);
        phase = static_cast<std::uint32_t>((phase + std::uint64_t{ms}) % 1000);
        expect(phase);
    }
}

TEST_F(AboutView, TheMarkAsksForItsOwnPictures) {
    robot.Advance(500);
    renderers.Calls().clear();
    robot.Advance(320);
    EXPECT_EQ(Count(renderers.Calls(), "Present", ""), 20);
    Own<CLogo>().SetVisible(false, 0);
    robot.Advance(100);
    renderers.Calls().clear();
    robot.Advance(320);
    EXPECT_EQ(Count(renderers.Calls(), "Present", ""), 0) << "while it is shown";
}

#if !defined(_WIN32) // where the system opens pages by itself
TEST_F(AboutView, HelpAndTheMarkOpenTheVendorsPages) {
    const auto folder = ScratchFolder() / "opener";
    const auto said = folder / "said";
    WriteText(folder / "xdg-open", "#!/bin/sh\necho \"$1\" >'" + said.string() + ".new'\nmv '" +
                                       said.string() + ".new' '" + said.string() + "'\n");
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    const auto path = folder.string() + ":" + std::getenv("PATH");
    setenv("PATH", path.c_str(), 1);
    const auto opened = [&said] {
        for (int n = 0; n < 500 && !std::filesystem::exists(said); ++n)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const auto text = ReadText(said);
        std::filesystem::remove(said);
        return text;
    };
    effect.reset();
    const Utils::SMakerService pages{
        u"http://127.0.0.1:9", u"http://127.0.0.1:8", u"0123abcd", u"vst24_test", {}};
    effect = std::make_unique<CHostedEffect>(
        host.Callback(), pages, std::make_unique<CDrivenSystem>(window, pictures));
    Open();
    robot.Tick();
    Gui().OpenAbout();
    Click(Own<CLogo>());
    EXPECT_EQ(opened(), "http://127.0.0.1:8/?from=plugin\n");
    Click(Named(u"BtnHelp"));
    EXPECT_EQ(opened(), "http://127.0.0.1:9/service/help.php?product_id=0123abcd\n");
    EXPECT_TRUE(Gui().IsAboutOpen());
}
#endif

// Its switches

TEST_F(AboutView, TheSimdSwitchShowsAndSetsWhatIsInUse) {
    auto& simd = Own<CSwitchSIMD>();
    EXPECT_EQ(simd.Item(), Device().Simd() ? 1 : 0);
    for (int n = 0; n < 3; ++n) {
        const bool before = Device().Simd();
        Click(simd);
        EXPECT_NE(Device().Simd(), before);
        EXPECT_EQ(simd.Item(), Device().Simd() ? 1 : 0);
        EXPECT_EQ(
            simd.GetText(false), Device().Simd() ? u"SIMD (experimental): On" : u"SIMD (experimental): Off");
    }
    Device().Simd() = !Device().Simd();
    robot.Tick();
    EXPECT_EQ(simd.Item(), Device().Simd() ? 1 : 0);
    EXPECT_EQ(Told(), Lines{}) << "the host isn't told";
    EXPECT_EQ(Gui().Records(), 0u);
}

TEST_F(AboutView, OpeningItSwitchesNothing) {
    for (const bool on : {true, false}) {
        ClickOk();
        robot.Tick();
        Device().Simd() = on;
        const auto* const live = &renderers.Live();
        Gui().OpenAbout();
        EXPECT_EQ(Device().Simd(), on);
        EXPECT_EQ(Own<CSwitchSIMD>().Item(), on ? 1 : 0);
        EXPECT_EQ(&renderers.Live(), live);
        EXPECT_EQ(Gui().Screen().Renderer(), GFX::Direct3D9);
        EXPECT_EQ(Own<CSwitchGPU>().Item(), 2);
    }
}

TEST_F(AboutView, TheRendererIsWheeledAndDragged) {
    auto& gpu = Own<CSwitchGPU>();
    EXPECT_EQ(gpu.Item(), 2);
    EXPECT_EQ(gpu.GetText(false), u"GUI Rendering: Direct3D9 ");
    Wheel(gpu, -1.0f);
    EXPECT_EQ(Gui().Screen().Renderer(), GFX::OpenGL);
    EXPECT_EQ(gpu.Item(), 1);
    Wheel(gpu, -1.0f);
    EXPECT_EQ(Gui().Screen().Renderer(), GFX::Software);
    Wheel(gpu, -1.0f);
    EXPECT_EQ(Gui().Screen().Renderer(), GFX::Software);
    const auto [x, y] = MiddleOf(gpu);
    robot.Drag({x, y}, {x, y - 250});
    EXPECT_EQ(Gui().Screen().Renderer(), GFX::OpenGL);
    robot.Advance(1000); // or it would be a double click
    robot.Drag({x, y}, {x, y - 250});
    EXPECT_EQ(Gui().Screen().Renderer(), GFX::Direct3D9);
    EXPECT_EQ(gpu.GetText(true), u"Direct3D9");
    EXPECT_EQ(GUI::StoredNumber(u"GFX"), GFX::Direct3D9);
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(AboutView, AClickOnTheRendererDoesNothing) {
    const auto* const live = &renderers.Live();
    Click(Own<CSwitchGPU>());
    EXPECT_EQ(&renderers.Live(), live);
    EXPECT_EQ(Gui().Screen().Renderer(), GFX::Direct3D9);
}

TEST_F(AboutView, ADragWithinOnePositionKeepsTheRenderer) {
    const auto* const live = &renderers.Live();
    const auto [x, y] = MiddleOf(Own<CSwitchGPU>());
    robot.Drag({x, y}, {x, y + 100});
    EXPECT_EQ(&renderers.Live(), live);
}

TEST_F(AboutView, Direct2DIsShownAsDirect3DAndKept) {
    ClickOk();
    robot.Tick();
    Gui().Screen().SetRenderer(GFX::Direct2D);
    const auto* const live = &renderers.Live();
    Gui().OpenAbout();
    robot.Tick();
    EXPECT_EQ(Own<CSwitchGPU>().Item(), 2);
    EXPECT_EQ(Gui().Screen().Renderer(), GFX::Direct2D);
    EXPECT_EQ(&renderers.Live(), live);
}

TEST_F(AboutView, ANewRendererGetsThePictureOfThePanelToo) {
    Wheel(Own<CSwitchGPU>(), -1.0f);
    const auto& calls = renderers.Calls(); // of the new one
    const auto made = std::find(calls.begin(), calls.end(), "MakeBackdrop 754x553");
    ASSERT_NE(made, calls.end());
    const Lines panelAlone(calls.begin(), made);
    EXPECT_EQ(Count(panelAlone, "EndFrame", ""), 1);
    EXPECT_EQ(Count(panelAlone, "Present", ""), 0) << "the view would vanish for a moment";
    EXPECT_EQ(Count(panelAlone, "DrawTexture", "FF808080"), 0);
    EXPECT_EQ(Count(panelAlone, "DrawTexture ", " colour 96FFFFFF"), 0);
    EXPECT_TRUE(Own<CLogo>().IsVisible());
    EXPECT_EQ(Count(Picture(), "DrawTexture ", " to 0,0 754x553 colour FF808080"), 1);
}

TEST_F(AboutView, ALostDeviceGetsThePictureOfThePanelAgain) {
    renderers.Live().renewalDue = true;
    robot.Tick();
    ASSERT_FALSE(renderers.Live().renewalDue) << "it's the lost one";
    const auto& calls = renderers.Calls(); // of the new one
    const auto made = std::find(calls.begin(), calls.end(), "MakeBackdrop 754x553");
    ASSERT_NE(made, calls.end());
    EXPECT_EQ(Count({calls.begin(), made}, "Present", ""), 0);
    EXPECT_EQ(Count(Picture(), "DrawTexture ", " to 0,0 754x553 colour FF808080"), 1);
    ClickOk();
    robot.Advance(1100);
    renderers.Live().renewalDue = true;
    robot.Tick();
    EXPECT_EQ(Count(renderers.Calls(), "MakeBackdrop", ""), 0) << "the view has gone";
}

TEST_F(AboutView, ARendererThatFailsShowsTheOneInUse) {
    constexpr auto make = [](const GFX::SRendererTarget&, GFX::EReason) -> std::unique_ptr<GFX::GPU> {
        return std::make_unique<CRecordingGpu>();
    };
    static constexpr GFX::RendererTable table{{{u"Software", make, true}, {u"OpenGL", nullptr, true},
        {u"Direct3D9", make, true}, {u"Direct2D", nullptr, false}}};
    GFX::UseRenderers(&table);
    Wheel(Own<CSwitchGPU>(), -1.0f);
    EXPECT_EQ(Gui().Screen().Renderer(), GFX::Software) << "the end of the chain";
    EXPECT_EQ(Own<CSwitchGPU>().Item(), 0);
    EXPECT_EQ(Own<CSwitchGPU>().GetText(true), u"CPU");
    robot.Tick();
    EXPECT_TRUE(Gui().IsAboutOpen());
    effect.reset();
}
